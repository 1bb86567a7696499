// The tray and what it shows.

#include "adapters/qt/Tray.h"
#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/qt/LampDrawing.h"
#include "adapters/qt/QtMainThread.h"
#include "adapters/qt/WindowTray.h"
#include "desktop/PrivateBus.h"
#include "ports/Desktop.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMenu>
#include <QPainter>

using namespace vellux;

/// Read by the leak sanitizer: what Qt keeps of an interface that it asked about.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:QDBusMetaObject::createMetaObject\n";
}

namespace {

constexpr const char* kWatcher = "org.kde.StatusNotifierWatcher";
constexpr const char* kItem = "org.kde.StatusNotifierItem";

/// On X11: the offscreen platform has no tray.
class TrayFixture : public testing::Test {
protected:
    const PrivateBus m_session{BusKind::Session};
    const XServer m_display;
    int m_nArguments = 0;
    const QApplication m_application{m_nArguments, nullptr};
};

/// A watcher with a panel that comes a little later.
class Watcher : public DbusMock {
public:
    Watcher() : DbusMock(BusKind::Session, kWatcher, "/StatusNotifierWatcher", kWatcher) {
        addMethod("RegisterStatusNotifierItem", "s", "", "");
        QCoreApplication::processEvents();
        addProperty("IsStatusNotifierHostRegistered", true);
        emitSignal("StatusNotifierHostRegistered", "", {});
    }
    /// The bus name of the icon.
    QString item() {
        const QString strCall = "RegisterStatusNotifierItem ";
        EXPECT_TRUE(waitUntil([&] { return calls().join(' ').contains(strCall); }));
        return calls().filter(strCall).value(0).mid(strCall.size()).remove('"');
    }
};

/// Counts what an icon announces.
class Announced : public QObject {
    Q_OBJECT
public:
    explicit Announced(const QString& strItem) {
        for (const char* strSignal : {"NewIcon", "NewToolTip"})
            QDBusConnection::sessionBus().connect(strItem, "/StatusNotifierItem", kItem, strSignal, this,
                                                  SLOT(onSignal(QDBusMessage)));
    }
    QStringList m_signals;

public Q_SLOTS:
    void onSignal(const QDBusMessage& message) { m_signals.append(message.member()); }
};

// An icon missing because the panel came later, or came back; one that makes the panel draw for nothing.
TEST_F(TrayFixture, AnIconIsThereWheneverAPanelIs) {
    QStringList done;
    Tray tray({[&] { done += "show"; }, [&] { done += "connect"; }, [&] { done += "exit"; }});
    TrayState state{{0, false}, false, "Following", "Busy", "Disconnect", true};
    tray.setState(state);
    QCoreApplication::processEvents();

    QString strItem = std::make_unique<Watcher>()->item(); // which goes again
    QDBusConnection bus = QDBusConnection::sessionBus();
    EXPECT_TRUE(waitUntil([&] { return !bus.interface()->isServiceRegistered(strItem).value(); }));
    Watcher watcher;
    strItem = watcher.item();

    const Announced announced(strItem);
    tray.setState(state);
    state.lamp.bFlashing = true;
    tray.setState(state);
    state.strPresence = "Away";
    tray.setState(state);
    tray.setState(state);
    state.bMarked = true;
    tray.setState(state);
    state.strFollowing = "Not reached";
    tray.setState(state);
    EXPECT_TRUE(waitUntil([&] { return announced.m_signals.size() >= 5; }));
    EXPECT_EQ(announced.m_signals,
              QStringList({"NewIcon", "NewToolTip", "NewToolTip", "NewIcon", "NewToolTip"}));

    QDBusMessage click = QDBusMessage::createMethodCall(strItem, "/StatusNotifierItem", kItem, "Activate");
    bus.asyncCall(click << 0 << 0);
    EXPECT_TRUE(waitUntil([&] { return done.size() == 1; }));
    state.bConnectEnabled = false;
    tray.setState(state);
    const auto widgets = QApplication::topLevelWidgets();
    const auto menu =
        std::find_if(widgets.begin(), widgets.end(), [](auto* p) { return qobject_cast<QMenu*>(p); });
    ASSERT_NE(menu, widgets.end());
    for (QAction* const pAction : (*menu)->actions())
        pAction->trigger();
    EXPECT_EQ(done, QStringList({"show", "show", "exit"}));
    EXPECT_EQ((*menu)->actions().value(1)->text(), "Disconnect");
}

// A tray that keeps showing what was true before the server went away, or announces what has not changed.
TEST_F(TrayFixture, ALossIsSeenOnTheIcon) {
    VelluxWindowUi& controller = VelluxWindowUi::sharedVelluxWindowUi();
    VelluxHttp& client = VelluxHttp::sharedVelluxHttp();
    QtMainThread mainThread;
    Following following(mainThread, controller, client);
    Observable<Choices> choices;
    class : public Window {
        void makeKeyAndOrderFront() override {}
        void orderOut() override {}
        void setLevel(WindowLevel) override {}
    } window;
    Watcher watcher;
    const WindowTray tray({mainThread, controller, window, following, choices});
    Announced announced(watcher.item());
    const auto announce = [&](const ChannelStatus& channel, const QStringList& expected) {
        announced.m_signals.clear();
        client.channel().set(channel);
        waitUntil([&] { return announced.m_signals.size() >= expected.size(); });
        EXPECT_EQ(announced.m_signals, expected);
    };
    controller.buttonConnect()->setTitle("Disconnect");
    announce({ChannelState::Open, {}, {}}, {"NewToolTip"});
    announce({ChannelState::NotReached, {}, {}}, {"NewIcon", "NewToolTip"});
    announce({ChannelState::Ended, {}, {}}, {"NewToolTip"});
    announce({ChannelState::Open, {}, {}}, {"NewIcon", "NewToolTip"});
}

// States that can't be distinguished without seeing colours, and sizes that a panel has to scale.
TEST(LampDrawing, PicturesDifferWithoutTheirColours) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int nArguments = 0;
    const QApplication application(nArguments, nullptr);
    QList<QImage> pictures;
    for (const bool bFlashing : {false, true})
        for (std::int32_t nColor = 0; nColor <= 8; ++nColor) {
            const QIcon icon = lampIcon({nColor, bFlashing});
            EXPECT_EQ(icon.availableSizes().size(), 6);
            pictures.append(icon.pixmap(16).toImage().convertToFormat(QImage::Format_Grayscale8));
        }
    const auto differences = [](const QImage& one, const QImage& other) {
        int nDifferent = 0;
        for (int n = 0; n < 16 * 16; ++n)
            nDifferent +=
                std::abs(qGray(one.pixel(n % 16, n / 16)) - qGray(other.pixel(n % 16, n / 16))) > 60;
        return nDifferent;
    };
    for (const QImage& one : pictures)
        for (const QImage& other : pictures)
            EXPECT_TRUE(&one == &other || differences(one, other) >= 8)
                << pictures.indexOf(one) << " " << pictures.indexOf(other);
    // The mark is seen on every lamp, on light and on dark panels.
    const auto onPanel = [](Qt::GlobalColor ground, const QIcon& icon) {
        QImage panel(16, 16, QImage::Format_RGB32);
        panel.fill(ground);
        QPainter(&panel).drawPixmap(0, 0, icon.pixmap(16));
        return panel;
    };
    for (const Qt::GlobalColor ground : {Qt::white, Qt::black})
        for (std::int32_t nColor = 0; nColor <= 8; ++nColor)
            EXPECT_GE(differences(onPanel(ground, lampIcon({nColor, false}, false)),
                                  onPanel(ground, lampIcon({nColor, false}, true))),
                      20);
    for (const std::int32_t nColor : {-1, 8, 9})
        EXPECT_EQ(lampColourName({nColor, false}), "None (off)");
}

} // namespace

#include "TrayTest.moc"
