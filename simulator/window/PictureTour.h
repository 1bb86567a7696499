// Pictures of the real window, for the documentation.
#pragma once

#include "light/VirtualLights.h"
#include "platform/Changes.h"
#include "platform/Console.h"
#include "server/PresenceServer.h"
#include "threads/MainThread.h"
#include "window/Look.h"

#include <QWidget>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

class QPixmap;
class VelluxWindowUi;

namespace vellux::simulator {

/// Brings the program into one state after the other, as a user and a server would, saves a picture of the
/// screen's part that its windows cover, and ends the program.
class PictureTour {
public:
    /// References that outlive the tour.
    struct Dependencies {
        MainThread& mainThread;
        Changes& changes;
        Console& console;
        VirtualLights& lights;
        VirtualLightRef light;
        PresenceServer& server;
        VelluxWindowUi& controller;
        QWidget& window;
        std::function<bool()> isTrayThere; ///< main thread
    };

    /// Starts on a thread of its own. The light look takes all pictures, the others one each.
    PictureTour(std::string strDirectory, Look look, Dependencies dependencies);
    /// Waits for that thread, which ends when the main thread's queue is closed, at the latest.
    ~PictureTour();
    PictureTour(const PictureTour&) = delete;
    PictureTour& operator=(const PictureTour&) = delete;

    /// Whether all pictures were taken and saved. After the program has ended.
    bool succeeded() const { return m_bSucceeded; }

private:
    using Call = std::function<void()>;
    using Condition = std::function<bool()>;

    bool run();
    bool all();
    bool losses();
    bool firstStart();
    bool tray();
    /// What opens at a press on the button.
    bool page(const char* strButton, const std::string& strName);
    bool connected();
    bool when(const Condition& condition) const;
    bool eventually(const Condition& condition) const;
    bool does(const Call& call) const;
    bool saves(const QPixmap& picture, const std::string& strName) const;
    bool takes(const std::string& strName) const;

    const std::string m_strDirectory;
    const Look m_look;
    const Dependencies m_dependencies;
    std::atomic<bool> m_bSucceeded{false};
    std::thread m_thread;
};

} // namespace vellux::simulator
