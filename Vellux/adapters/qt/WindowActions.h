// What the program's windows have in common.
#pragma once

#include "ports/Desktop.h"

#include <QFont>
#include <QWidget>

namespace vellux {

/// Shows a window, also one that was minimised, above the others and gives it the keyboard; an open alert,
/// which blocks it, comes to stand above it. Main thread.
void bringToFront(QWidget& window);
/// Brings an open alert to the front; false when there is none. Main thread.
bool alertToFront();
/// Lets a window float above ordinary ones, or no longer. Main thread.
void setWindowLevel(QWidget& window, WindowLevel level);
/// The font of a heading that stands over text in the given font. Main thread.
QFont headingFont(QFont font);

} // namespace vellux
