// What the program's windows have in common.
#pragma once

#include "ports/Desktop.h"

#include <QFont>
#include <QWidget>

namespace vellux {

/// Shows a window, even a minimised one, above the others and gives it the focus; an open alert, which blocks
/// it, is raised above it. Main thread.
void bringToFront(QWidget& window);
/// Brings an open alert to the front; false when there is none. Main thread.
bool alertToFront();
/// Makes a window float above ordinary ones, or stops that. Main thread.
void setWindowLevel(QWidget& window, WindowLevel level);
/// The text with places to break a line in accounts and paths, which have no blanks. Main thread.
QString breakable(QString strText);
/// The font of a heading that stands over text in the given font. Main thread.
QFont headingFont(QFont font);

} // namespace vellux
