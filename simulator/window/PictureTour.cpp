#include "window/PictureTour.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "day/UserActions.h"
#include "model/ConnectTitle.h"
#include "server/Bodies.h"

#include <QApplication>
#include <QCursor>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>

#include <chrono>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace vellux::simulator {

namespace {

constexpr std::chrono::seconds kLongestWait{20};
constexpr std::chrono::milliseconds kSettling{300}; // until what has changed is on the screen, too

QWidget* otherWindow(const QWidget& window) {
    for (QWidget* const each : QApplication::topLevelWidgets())
        if (each != &window && each->isVisible() && each->isWindow())
            return each;
    return nullptr;
}

// A window manager would place them anywhere.
void place(QWidget& window) {
    const int nMargin = 2 * window.fontMetrics().height();
    QWidget* const other = otherWindow(window);
    const int nWider = other == nullptr ? 0 : (other->width() - window.width()) / 2;
    window.move(nMargin + qMax(0, nWider), nMargin);
    if (other != nullptr)
        other->move(window.frameGeometry().center() - other->rect().center());
}

QRect covered(const QWidget& window) {
    QRect area = window.frameGeometry();
    if (const QWidget* const other = otherWindow(window))
        area |= other->frameGeometry();
    return area;
}

} // namespace

PictureTour::PictureTour(std::string strDirectory, Look look, Dependencies dependencies)
    : m_strDirectory(std::move(strDirectory)), m_look(look), m_dependencies(std::move(dependencies)),
      m_thread([this] {
          m_bSucceeded = run();
          does([this] { m_dependencies.controller.onExit(nullptr); });
      }) {}

PictureTour::~PictureTour() {
    m_thread.join();
}

bool PictureTour::does(const Call& call) const {
    return m_dependencies.mainThread.runAndWait(call);
}

bool PictureTour::when(const Condition& condition) const {
    return m_dependencies.changes.waitUntil(condition, kLongestWait);
}

// For what Changes doesn't report.
bool PictureTour::eventually(const Condition& condition) const {
    const auto end = std::chrono::steady_clock::now() + kLongestWait;
    while (!m_dependencies.changes.hasEnded() && std::chrono::steady_clock::now() < end) {
        if (condition())
            return true;
        std::this_thread::sleep_for(kSettling);
    }
    return false;
}

bool PictureTour::saves(const QPixmap& picture, const std::string& strName) const {
    const std::string strFile = m_strDirectory + "/" + strName + ".png";
    const bool bSaved = picture.save(QString::fromStdString(strFile));
    m_dependencies.console.print((bSaved ? "picture " : "no picture ") + strFile);
    return bSaved;
}

bool PictureTour::takes(const std::string& strName) const {
    does([this] { place(m_dependencies.window); });
    std::this_thread::sleep_for(kSettling);
    bool bSaved = false;
    does([&] {
        const QRect area = covered(m_dependencies.window);
        const QPixmap picture =
            m_dependencies.window.screen()->grabWindow(0, area.x(), area.y(), area.width(), area.height());
        bSaved = saves(picture, strName);
    });
    return bSaved;
}

bool PictureTour::connected() {
    VelluxWindowUi& controller = m_dependencies.controller;
    does([&controller] { pressConnect(controller, kTitleConnect); });
    return when([&] {
        return m_dependencies.light->record().state.text() == "Green" &&
               controller.buttonConnect()->isEnabled() && isConnected(*controller.buttonConnect()) &&
               m_dependencies.server.isPolling();
    });
}

// The fields are as empty as they are for a new user.
bool PictureTour::firstStart() {
    VelluxWindowUi& controller = m_dependencies.controller;
    const std::shared_ptr<TextField> fields[] = {
        controller.textFieldLyncServerName(), controller.textFieldUsername(), controller.textFieldPassword()};
    std::vector<std::string> texts;
    does([&] {
        for (const auto& field : fields) {
            texts.push_back(field->text());
            field->setText("");
        }
    });
    const bool bGood = takes("first-start");
    does([&] {
        for (std::size_t n = 0; n < texts.size(); ++n)
            fields[n]->setText(texts[n]);
    });
    return bGood;
}

// What the tray's panel, which ends in the screen's lower right corner, shows, and says under the mouse.
bool PictureTour::tray() {
    bool bGood = false;
    const auto isThere = [&] {
        does([&] { bGood = m_dependencies.isTrayThere(); });
        return bGood;
    };
    if (!eventually(isThere))
        return false;
    const QRect screen = m_dependencies.window.screen()->geometry();
    const int nLine = m_dependencies.window.fontMetrics().height();
    does([&] { QCursor::setPos(screen.bottomRight() - QPoint(nLine, nLine)); });
    std::this_thread::sleep_for(5 * kSettling);
    const QSize size = QSize(44, 5) * nLine;
    does([&] {
        const QPoint corner = screen.bottomRight() - QPoint(size.width() - 1, size.height() - 1);
        const QPixmap picture = m_dependencies.window.screen()->grabWindow(0, corner.x(), corner.y(),
                                                                           size.width(), size.height());
        bGood = saves(picture, "tray");
        QCursor::setPos(0, 0);
    });
    return bGood;
}

bool PictureTour::page(const char* strButton, const std::string& strName) {
    does([&] { m_dependencies.window.findChild<QPushButton*>(strButton)->click(); });
    const bool bGood = takes(strName);
    does([this] {
        if (QWidget* const other = otherWindow(m_dependencies.window))
            other->close();
    });
    return bGood;
}

bool PictureTour::run() {
    if (m_look == Look::Light && !firstStart())
        return false;
    if (!connected())
        return false;
    switch (m_look) {
    case Look::Dark:
        return takes("dark-palette");
    case Look::Large:
        return takes("scale-200");
    case Look::Native:
    case Look::Light:
        break;
    }
    return all();
}

bool PictureTour::losses() {
    const auto polls = [this] { return m_dependencies.server.isPolling(); };
    const auto isLost = [this] {
        bool bLost = false;
        does([&] { bLost = m_dependencies.window.findChild<QWidget*>("labelFollowingIcon")->isVisible(); });
        return bLost;
    };
    if (!when(polls))
        return false;
    m_dependencies.server.emitBatch({401, unauthorizedPage(), "text/html"});
    bool bGood = eventually(isLost) && takes("ended") && tray();
    does([this] { m_dependencies.controller.reconnect(); });
    bGood = bGood && when(polls);

    constexpr int kTimes = 8; // for half a second each
    m_dependencies.server.interfere(Route::Events, {{}, Reply::cut(), CutOff::Never, kTimes});
    m_dependencies.server.cutHeldPolls();
    bGood = bGood && eventually(isLost) && takes("not-reached");
    bGood = bGood && eventually([&] { return !isLost(); }) && page("buttonDetails", "details");
    return when(polls) && bGood;
}

bool PictureTour::all() {
    VelluxWindowUi& controller = m_dependencies.controller;
    const auto shows = [this](const char* strState) {
        return [this, strState] { return m_dependencies.light->record().state.text() == strState; };
    };
    bool bGood = takes("sync-connected");

    does([&] {
        setBox(controller, "buttonFlashOnCall", true);
        selectEntry(controller, "syncModeColorList", "Purple");
    });
    m_dependencies.server.setPresence("Busy", "on-the-phone");
    bGood = bGood && when(shows("Purple flashing medium")) && takes("on-a-call");

    does([&] {
        selectMode(controller, /*bManual=*/true);
        selectEntry(controller, "manualModeColorList", "Blue");
        selectEntry(controller, "manualModeFlashSpeedList", "Slow");
    });
    bGood = bGood && when(shows("Blue flashing slow")) && takes("manual-flashing");

    does([&] { selectMode(controller, /*bManual=*/false); });
    bGood = bGood && losses();

    const auto refused =
        std::make_shared<VirtualLight>(LightModel::Framed, m_dependencies.console, m_dependencies.changes);
    does([&] {
        m_dependencies.lights.unplug(m_dependencies.light);
        refused->setPermitted(false);
        m_dependencies.lights.plug(refused);
    });
    bGood = bGood && when([&] {
                return controller.light().get().access == vellux::LightState::Access::NotPermitted &&
                       isConnected(*controller.buttonConnect()) && controller.buttonConnect()->isEnabled();
            });
    bGood = bGood && takes("light-not-permitted");

    does([&] {
        m_dependencies.lights.unplug(refused);
        m_dependencies.lights.plug(m_dependencies.light);
        pressConnect(controller, kTitleDisconnect);
        controller.textFieldPassword()->setText("another-password");
        pressConnect(controller, kTitleConnect);
    });
    const auto isAlertOpen = [this] {
        bool bOpen = false;
        does([&bOpen] { bOpen = QApplication::activeModalWidget() != nullptr; });
        return bOpen;
    };
    bGood = bGood && eventually(isAlertOpen) && takes("alert");
    int nQuiet = 0; // one alert follows the other
    bGood = bGood && eventually([&] {
                does([&nQuiet] {
                    QWidget* const alert = QApplication::activeModalWidget();
                    nQuiet = alert == nullptr ? nQuiet + 1 : 0;
                    if (alert != nullptr)
                        alert->close();
                });
                return nQuiet > 2 && controller.buttonConnect()->isEnabled();
            });
    bGood = bGood && takes("why-not");

    does([&controller] { controller.onAbout(nullptr); });
    return bGood && takes("about");
}

} // namespace vellux::simulator
