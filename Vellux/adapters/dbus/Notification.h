// A notice of the desktop's.
#pragma once

#include <QString>

namespace vellux {

/// Shows a notice through org.freedesktop.Notifications. Returns at once; where that service is missing
/// nothing happens. Main thread.
void showNotification(const QString& strSummary, const QString& strBody);

} // namespace vellux
