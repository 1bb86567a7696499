// Desktop notifications.
#pragma once

#include <QString>

namespace vellux {

/// Shows a notification by org.freedesktop.Notifications. Returns at once; does nothing where that service is
/// missing. Main thread.
void showNotification(const QString& strSummary, const QString& strBody);

} // namespace vellux
