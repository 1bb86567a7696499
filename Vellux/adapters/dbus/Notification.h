// Desktop notifications.
#pragma once

#include <QList>
#include <QString>

#include <functional>
#include <memory>

namespace vellux {

/// Shows a notification by org.freedesktop.Notifications. Returns at once; does nothing where that service is
/// missing. Main thread.
void showNotification(const QString& strSummary, const QString& strBody);

/// A button of a notification.
struct NotificationAction {
    QString strKey;   ///< which the callback gets; "default" is a press on the notification itself
    QString strLabel; ///< what the user reads
};

/// A notification that may still be shown. Main thread.
class Notification {
public:
    /// Withdraws it, if the user has not closed it before. Returns at once.
    virtual ~Notification() = default;
    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;

protected:
    Notification() = default;
};

/// What is done when the user presses a button; with the token that lets a window come to the front, "" where
/// the service sends none.
using NotificationPressed = std::function<void(const QString& strKey, const QString& strToken)>;

/// The same with buttons, where the service has any; without them elsewhere. `pressed` is called on the main
/// thread's loop as long as the result lives, and may destroy it. Never null. Main thread.
[[nodiscard]] std::unique_ptr<Notification> showNotification(const QString& strSummary,
                                                             const QString& strBody,
                                                             const QList<NotificationAction>& actions,
                                                             NotificationPressed pressed);

} // namespace vellux
