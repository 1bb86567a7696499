// Coming to the front when the user asked for it elsewhere.
#pragma once

#include <QString>
#include <QWidget>

namespace vellux {

/// To be called before a window is brought to the front: proves to the desktop that the user asked for it, by
/// the request's activation token, under X11 a startup id. Without it, desktops that prevent focus stealing
/// only mark the window as demanding attention. Under X11 this shows the window. On Wayland it does nothing:
/// Qt 6.4 takes a token only from the environment, which other threads read. "" for none. Main thread.
void useActivationToken(QWidget& window, const QString& strToken);

} // namespace vellux
