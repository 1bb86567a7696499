// What stands beside the controls: the lamp, the light, the following.
#include "WindowFixture.h"
#include "fakes/ServerTexts.h"

#include "window/LightPicture.h"

#include <QClipboard>

#include <cmath>

namespace {

using vellux::HttpFailure;

using LightFixture = WindowFixture;

// A light that does nothing, and a window that doesn't say why, takes it for none or another, or shows one
// that has gone; a copied command that is not the one shown, or that is still shown when it has helped.
TEST_F(LightFixture, LineSaysWhatThereIsAndWhatHelps) {
    EXPECT_EQ(textOf("labelLight"), "No light found.");
    const struct {
        std::int64_t nVendor, nProduct;
        vellux::HidResult nOpenResult;
        const char* pPart;
    } rows[] = {
        {0x1130, 0x1E00, 0, "(7 colours)."},
        {0x2C0D, 0x0006, 0, "(8 colours, flashes by itself)."},
        {0x2C0D, 0x0006, 13, "you may not open it"},
        {0x2C0D, 0x0006, 5, "can't be opened"},
    };
    for (const auto& row : rows) {
        const auto light = FakeHidManager::light(row.nVendor, row.nProduct);
        light->nOpenResult = row.nOpenResult;
        hid.simulateArrival(light);
        runPending();
        EXPECT_TRUE(textOf("labelLight").contains(row.pPart)) << textOf("labelLight").toStdString();
        EXPECT_EQ(textOf("labelLampName"), row.nOpenResult == 0 ? "None (off)" : "No usable light");
        EXPECT_EQ(widget<QLabel>("labelLight").toolTip(), QStringLiteral("USB %1:%2")
                                                              .arg(row.nVendor, 4, 16, QChar('0'))
                                                              .arg(row.nProduct, 4, 16, QChar('0')));
        EXPECT_EQ(widget<QWidget>("panelRemedy").isVisible(), row.nOpenResult == 13);
        if (row.nOpenResult == 13) {
            EXPECT_EQ(widget<QLineEdit>("textFieldRemedy").text(), "permit 11277:6 'a  b'");
            click("buttonCopyRemedy");
            EXPECT_EQ(QApplication::clipboard()->text(), "permit 11277:6 'a  b'");
        }
        light->nOpenResult = 0; // permitted meanwhile
        hid.noticeArrival(light);
        runPending();
        EXPECT_TRUE(textOf("labelLight").startsWith("Light found (")) << textOf("labelLight").toStdString();
        EXPECT_FALSE(widget<QWidget>("panelRemedy").isVisible());
        hid.simulateRemoval(light);
        runPending();
        EXPECT_EQ(textOf("labelLight"), "No light found.");
    }
}

// A lamp that is lit, or that is said to be, without a light to light; one whose colour a screen reader can't
// read out.
TEST_F(LightFixture, WithoutALightNothingIsLit) {
    const QImage hollow = widget<QWidget>("lampView").grab().toImage();
    EXPECT_EQ(textOf("labelLampName"), "No light");
    ui().displayVelluxColor(0);
    EXPECT_EQ(textOf("labelLampName"), "No light");
    EXPECT_EQ(textOf("labelLight"), "No light found. It would be red.");
    EXPECT_EQ(readOut("lampView", QAccessible::Description), "No light");
    EXPECT_EQ(widget<QWidget>("lampView").grab().toImage(), hollow);
    plugInFramed();
    EXPECT_EQ(textOf("labelLampName"), "Red");
    EXPECT_NE(widget<QWidget>("lampView").grab().toImage(), hollow);
    clock.letRun();                  // entering the mode waits for a worker
    click("buttonSelectManualMode"); // red, at medium speed
    runUntil([this] { return textOf("labelLampName") == "Red, flashing"; }, "the lamp");
    EXPECT_EQ(readOut("lampView", QAccessible::Description), "Red, flashing");
    EXPECT_EQ(readOut("labelLampName", QAccessible::Name), "Red, flashing");
}

// A lamp of another colour or name than the light's.
TEST_F(LightFixture, LampLooksAsTheLightDoes) {
    plugInV30();
    vellux::simulator::LightPicture picture;
    picture.resize(200, 200);
    // Where no lamp has its shape, and where the picture's light does not shine.
    const auto colourAt = [](QWidget& shown, double dPlace) {
        const QImage image = shown.grab().toImage();
        const int nOut = static_cast<int>(std::min(image.width(), image.height()) * (0.5 - dPlace));
        return image.pixel(image.width() / 2 - nOut, image.height() / 2 - nOut);
    };
    std::vector<QRgb> lamps, lights;
    for (std::int32_t nColor = 0; nColor <= 8; ++nColor) {
        ui().displayVelluxColor(nColor);
        const std::string strName = ui().manualModeColorList()->items()[static_cast<std::size_t>(nColor)];
        EXPECT_EQ(textOf("labelLampName").toStdString(), nColor == 8 ? "None (off)" : strName);
        picture.setState({strName, ""});
        lamps.push_back(colourAt(widget<QWidget>("lampView"), 0.28));
        lights.push_back(colourAt(picture, 0.75));
    }
    const auto distance = [](QRgb one, QRgb other) {
        return std::hypot(qRed(one) - qRed(other), qGreen(one) - qGreen(other), qBlue(one) - qBlue(other));
    };
    for (std::size_t n = 0; n < 8; ++n)
        for (std::size_t nOther = 0; nOther < 8; ++nOther)
            EXPECT_LE(distance(lamps[n], lights[n]), distance(lamps[n], lights[nOther]))
                << n << " " << nOther;
}

// A window that doesn't say that the following has ended, that offers no way to reconnect, or one that does
// nothing, only disconnects or leaves the old poll open; words that are cut off; a state that a screen reader
// can't read out.
TEST_F(LightFixture, LostFollowingIsSeenAndTakenUpAgain) {
    EXPECT_EQ(textOf("labelFollowing"), "Not connected.");
    client().httpGet_EventChannels(); // nowhere to go: over, but nobody was following
    connectByHand();
    observeControls();
    const auto& label = widget<QLabel>("labelFollowing");
    const QSize size = window.size();
    for (const char* const pButton : {"buttonReconnect", "buttonReconnect", "buttonAlwaysReconnect"}) {
        EXPECT_EQ(label.text(), "Following CORP\\pat on lync.example.");
        EXPECT_EQ(window.size(), size);
        EXPECT_FALSE(widget<QWidget>("buttonReconnect").isVisible() || label.font().bold() ||
                     widget<QWidget>("labelFollowingIcon").isVisible());
        transport.lastPoll().simulateData("{}");
        transport.lastPoll().simulateEnd();
        EXPECT_EQ(label.text(), "Following has ended: the server has signed you out.");
        EXPECT_EQ(readOut("labelFollowing", QAccessible::Name), label.text());
        EXPECT_TRUE(widget<QWidget>("labelFollowingIcon").isVisible() && label.font().bold());
        runPending();
        EXPECT_GE(label.height(), label.heightForWidth(label.width()));
        widget<QWidget>("buttonReconnect").setFocus();
        for (const char* const pNext : {"buttonAlwaysReconnect", "buttonSelectSyncMode"}) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            EXPECT_EQ(QApplication::focusWidget()->objectName(), pNext);
        }
        EXPECT_FALSE(choices.get().bReconnect);
        journal.clear();
        click(pButton);
        runUntilConnectShows("Disconnect");
        runPending();
        EXPECT_EQ(journal.take({"cancel", "title"}),
                  (Lines{"cancel https://lync.example/ucwa/events?ack=1", "title Connect",
                         "title Connecting...", "title Disconnect"}));
        EXPECT_EQ(journal.take({"request"}).size(), 4U);
    }
    EXPECT_TRUE(choices.get().bReconnect);
    transport.lastPoll().simulateEnd();
    EXPECT_EQ(label.text(), "Following has ended. Trying again.");
    EXPECT_FALSE(widget<QWidget>("buttonAlwaysReconnect").isVisible());
    click("buttonConnect"); // disconnects: that is no loss
    EXPECT_EQ(label.text(), "Not connected.");
    EXPECT_FALSE(label.font().bold());
}

// A sign-in that never says since when, says so at once or of the one before; a second one beside it; a
// window that wakes for nothing; a reason that is not shown, or outlives what it is the reason of.
TEST_F(LightFixture, ConnectingSaysSinceWhenAndWhyNot) {
    using namespace std::chrono_literals;
    const auto& line = widget<QLabel>("labelFollowing");
    const auto& why = widget<QLabel>("labelWhyNotConnected");
    connectByHand();
    EXPECT_FALSE(why.isVisible());
    for (int n = 0; n < 2; ++n) {
        holdRequests("oauthtoken");
        ui().reconnect();
        reached.acquire();
        timers.pass(2999ms);
        EXPECT_EQ(line.text(), "Connecting: signing in…");
        ui().reconnect(); // does nothing now
        timers.pass(1ms);
        EXPECT_TRUE(line.text().startsWith("Connecting since ")) << line.text().toStdString();
        EXPECT_EQ(timers.untilNext(), std::nullopt);
        clock.timeOfDay = clock.timeOfDay.load() + 1h;
        goOn.release();
        runUntilConnectShows("Disconnect");
        runPending();
        EXPECT_EQ(line.text(), "Following CORP\\pat on lync.example.");
        EXPECT_EQ(timers.untilNext(), std::nullopt);
    }
    transport.onRequest = {};
    vellux::HttpExchange refused;
    refused.strHost = "lync.example";
    refused.bPoll = true;
    refused.error = {"refused", HttpFailure::Refused};
    log.add(refused);
    transport.lastPoll().simulateFailure(HttpFailure::Refused);
    EXPECT_TRUE(line.text().startsWith("Not reached since "));
    EXPECT_TRUE(line.font().bold() && why.isVisible());
    EXPECT_TRUE(why.text().startsWith("lync.example refuses the connection."));
    EXPECT_GE(why.height(), why.heightForWidth(why.width()));
    refused.error->failure = HttpFailure::NameNotFound;
    onWorker([&] { log.add(refused); });
    EXPECT_TRUE(why.text().startsWith("The name lync.example was not found."));
    EXPECT_EQ(why.height(), why.heightForWidth(why.width()));
    refused.error->failure = HttpFailure::Reset;
    log.add(refused);
    EXPECT_LT(why.minimumHeight(), 2 * why.fontMetrics().lineSpacing()); // no gap where the longer one was
    EXPECT_FALSE(widget<QWidget>("buttonReconnect").isVisible());
    transport.lastPoll().simulateFailure(HttpFailure::Silent);
    EXPECT_FALSE(why.isVisible() || line.font().bold());
    clock.letRun();
    click("buttonSelectManualMode");
    runPending();
    EXPECT_EQ(line.text(), "");
    journal.clear();
}

} // namespace
