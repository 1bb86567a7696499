// The desktop notification about a lost following.
#pragma once

#include "app/LossNotice.h"

#include <QString>

#include <functional>
#include <memory>

class VelluxWindowUi;

namespace vellux {

class ConnectionLog;
class Notification;

/// Says in the window's words what was lost and why, with the actions "Reconnect" and "Show". Main thread.
class LossNotification {
public:
    /// All of these outlive it.
    struct Dependencies {
        MainThread& mainThread;
        Timers& timers;
        VelluxWindowUi& controller;
        Following& following;
        Observable<Choices>& choices;
        ConnectionLog& log;
        /// Brings the window to the front with the desktop's token, "" for none.
        std::function<void(const QString& strToken)> showWindow;
    };
    explicit LossNotification(Dependencies dependencies);
    ~LossNotification();
    LossNotification(const LossNotification&) = delete;
    LossNotification& operator=(const LossNotification&) = delete;

private:
    void show(const FollowingState& state);
    void press(const QString& strKey, const QString& strToken);

    const Dependencies m_dependencies;
    std::unique_ptr<Notification> m_shown;
    LossNotice m_notice;
};

} // namespace vellux
