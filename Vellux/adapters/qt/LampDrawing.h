// The lamp as a picture: one drawing for the window, the tray and the window's icon.
#pragma once

#include "model/ViewState.h"

#include <QColor>
#include <QIcon>
#include <QPainter>
#include <QRectF>
#include <QString>

namespace vellux {

/// "Red", "Green", … in the words of the window's colour lists; "None (off)" also for an index out of range.
/// Main thread.
QString lampColourName(const LampState& lamp);
/// The name with "flashing" behind it while it flashes ("Red, flashing"). Main thread.
QString lampDescription(const LampState& lamp);

/// Paints an outlined disc in the lamp's colour into a square, with a shape inside that differs per colour,
/// and a mark while it flashes, so that states can be distinguished without seeing colours. `outline` is the
/// colour of the outline and, if legible on the disc, of the shape. Main thread.
void paintLamp(QPainter& painter, const QRectF& square, const LampState& lamp, const QColor& outline);

/// The picture as an icon, in pixmaps from 16 to 64 pixels; with the mark in a corner, on any panel's colour.
/// Main thread.
QIcon lampIcon(const LampState& lamp, bool bMarked = false);

/// The mark that says that something needs attention, alone, in the same sizes. Main thread.
QIcon markIcon();

} // namespace vellux
