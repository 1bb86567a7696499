// Coming to the front when the user asked for it elsewhere.
#pragma once

#include <QString>
#include <QWidget>

namespace vellux {

/// Before a window comes to the front: lets the desktop know that the user asked for it, by the token that
/// came with the request, a startup id of X11's; without it, desktops that protect the focus only mark the
/// window as waiting. Under X11 it shows the window. On Wayland it does nothing: Qt 6.4 takes a token from
/// the environment alone, which other threads read. "" for none. Main thread.
void useActivationToken(QWidget& window, const QString& strToken);

} // namespace vellux
