#include "adapters/qt/LampDrawing.h"

#include "adapters/qt/Words.h"

#include <QCoreApplication>
#include <QPen>
#include <QPixmap>
#include <QPointF>
#include <QRadialGradient>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace vellux {

namespace {

enum class Shape { Bar, Tick, Clock, Slash, Plus, Diamond, Dot, Exclamation };

// By colour index.
constexpr std::array kShapes{Shape::Bar,  Shape::Tick,    Shape::Clock, Shape::Slash,
                             Shape::Plus, Shape::Diamond, Shape::Dot,   Shape::Exclamation};
static_assert(kShapes.size() == kColourOff);

bool isLit(const LampState& lamp) {
    return isColour(lamp.nColor) && lamp.nColor != kColourOff;
}

/// Relative luminance and contrast as the Web Content Accessibility Guidelines define them.
double luminance(const QColor& colour) {
    const auto linear = [](double d) {
        return d <= 0.04045 ? d / 12.92 : std::pow((d + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const auto [dDark, dLight] = std::minmax({luminance(one), luminance(other)});
    return (dLight + 0.05) / (dDark + 0.05);
}

/// The outline's colour if it is legible on the disc, else black or white.
QColor shapeColour(const QColor& disc, const QColor& outline) {
    constexpr double kReadable = 3.0; // the guidelines' least contrast of graphics
    if (contrast(outline, disc) >= kReadable)
        return outline;
    return contrast(Qt::white, disc) >= kReadable ? QColor(Qt::white) : QColor(0x20, 0x20, 0x20);
}

/// A shape inside a disc of the radius `r` around the origin; strokes `w` wide.
void paintShape(QPainter& painter, Shape shape, qreal r, qreal w, const QColor& colour) {
    painter.setPen(QPen(colour, w, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(colour);
    switch (shape) {
    case Shape::Bar: {
        // On whole pixels, w high.
        const qreal dHalf = std::round(0.58 * r);
        painter.fillRect(QRectF(-dHalf, -std::floor(w / 2), 2 * dHalf, w), colour);
        break;
    }
    case Shape::Tick:
        painter.setBrush(Qt::NoBrush);
        painter.drawPolyline(
            std::array{QPointF(-0.46, 0.04) * r, QPointF(-0.12, 0.38) * r, QPointF(0.48, -0.34) * r}.data(),
            3);
        break;
    case Shape::Clock:
        painter.setBrush(Qt::NoBrush);
        painter.drawPolyline(
            std::array{QPointF(0, -0.58) * r, QPointF(0, 0.06) * r, QPointF(0.42, 0.30) * r}.data(), 3);
        break;
    case Shape::Slash:
        painter.drawLine(QPointF(-0.40, 0.40) * r, QPointF(0.40, -0.40) * r);
        break;
    case Shape::Plus: {
        const qreal dHalf = std::round(0.52 * r);
        painter.fillRect(QRectF(-dHalf, -std::floor(w / 2), 2 * dHalf, w), colour);
        painter.fillRect(QRectF(-std::floor(w / 2), -dHalf, w, 2 * dHalf), colour);
        break;
    }
    case Shape::Diamond:
        painter.setPen(Qt::NoPen);
        painter.drawPolygon(std::array{QPointF(0, -0.58) * r, QPointF(0.58, 0) * r, QPointF(0, 0.58) * r,
                                       QPointF(-0.58, 0) * r}
                                .data(),
                            4);
        break;
    case Shape::Dot:
        painter.setPen(Qt::NoPen);
        painter.drawEllipse(QPointF(0, 0), 0.38 * r, 0.38 * r);
        break;
    case Shape::Exclamation:
        painter.drawLine(QPointF(0, -0.52) * r, QPointF(0, 0.12) * r);
        painter.setPen(Qt::NoPen);
        painter.drawEllipse(QPointF(0, 0.54) * r, 0.62 * w, 0.62 * w);
        break;
    }
}

/// Short rays in the square's corners, outside a disc of the radius `r` around the origin.
void paintRays(QPainter& painter, qreal r, qreal dHalfSide, qreal w, const QColor& colour) {
    painter.setPen(QPen(colour, w, Qt::SolidLine, Qt::RoundCap));
    const qreal dInner = (r + w) * M_SQRT1_2;
    const qreal dOuter = dHalfSide - w / 2;
    for (const QPointF corner : {QPointF(1, 1), QPointF(1, -1), QPointF(-1, 1), QPointF(-1, -1)})
        painter.drawLine(corner * dInner, corner * dOuter);
}

/// An exclamation mark on an amber disc with a dark rim: the disc can be seen on dark, the rim on light.
void paintMark(QPainter& painter, const QRectF& square) {
    const QColor amber(0xff, 0xb3, 0x00);
    const QColor dark(0x20, 0x20, 0x20);
    const qreal dSide = square.width();
    const qreal dRim = std::max(1.0, std::round(dSide / 14));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(dark, dRim));
    painter.setBrush(amber);
    painter.drawEllipse(square.adjusted(dRim / 2, dRim / 2, -dRim / 2, -dRim / 2));
    // On whole pixels: the smallest is ten of them high.
    const qreal dWidth = std::max(2.0, 2 * std::round(dSide / 14));
    const qreal dLeft = std::round(square.center().x() - dWidth / 2);
    const qreal dTop = square.top() + std::round(0.2 * dSide);
    const qreal dDot = std::max(1.0, std::round(0.13 * dSide));
    const qreal dDotTop = square.bottom() - std::round(0.2 * dSide) - dDot;
    painter.fillRect(QRectF(dLeft, dTop, dWidth, dDotTop - dTop - std::max(1.0, std::round(0.09 * dSide))),
                     dark);
    painter.fillRect(QRectF(dLeft, dDotTop, dWidth, dDot), dark);
}

template <typename Paint> QIcon iconOf(Paint paint) {
    QIcon icon;
    for (const int nSide : {16, 22, 24, 32, 48, 64}) {
        QPixmap pixmap(nSide, nSide);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(painter, QRectF(0, 0, nSide, nSide));
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace

QString lampColourName(const LampState& lamp) {
    return isLit(lamp) ? shownWord(kColours[lamp.nColor].strName)
                       : QCoreApplication::translate("Lamp", "None (off)");
}

QString lampDescription(const LampState& lamp) {
    const QString strName = lampColourName(lamp);
    return lamp.bFlashing ? QCoreApplication::translate("Lamp", "%1, flashing").arg(strName) : strName;
}

void paintLamp(QPainter& painter, const QRectF& square, const LampState& lamp, const QColor& outline) {
    const bool bLit = isLit(lamp);
    const qreal dSide = std::min(square.width(), square.height());
    // A hollow disc has only its outline to be seen by.
    const qreal dOutline =
        bLit ? std::max(1.0, std::round(dSide / 18)) : std::max(2.0, std::round(dSide / 12));
    const qreal dStroke = std::max(2.0, std::round(dSide / 9));
    // A flashing one leaves room for its rays.
    const qreal dRadius = (lamp.bFlashing ? std::floor(0.42 * dSide) : std::floor(dSide / 2)) - dOutline / 2;

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(square.center());
    painter.setPen(QPen(outline, dOutline));
    painter.setBrush(Qt::NoBrush);
    const QColor colour = QColor::fromRgb(bLit ? kColours[lamp.nColor].nDrawn : 0);
    if (bLit) {
        QRadialGradient fill(QPointF(-0.35, -0.45) * dRadius, 1.7 * dRadius);
        fill.setColorAt(0.0, colour.lighter(118));
        fill.setColorAt(0.55, colour);
        fill.setColorAt(1.0, colour.darker(115));
        painter.setBrush(fill);
    }
    painter.drawEllipse(QPointF(0, 0), dRadius, dRadius);
    if (bLit)
        paintShape(painter, kShapes[static_cast<std::size_t>(lamp.nColor)], dRadius, dStroke,
                   shapeColour(colour, outline));
    if (lamp.bFlashing)
        paintRays(painter, dRadius + dOutline / 2, dSide / 2, std::max(2.0, std::round(dSide / 12)), outline);
    painter.restore();
}

QIcon lampIcon(const LampState& lamp, bool bMarked) {
    const QColor outline(0x80, 0x80, 0x80); // can be seen on light and on dark panels
    return iconOf([&](QPainter& painter, const QRectF& square) {
        paintLamp(painter, square, lamp, outline);
        if (!bMarked)
            return;
        const qreal dSide = std::round(0.56 * square.width());
        const QRectF corner(square.right() - dSide, square.bottom() - dSide, dSide, dSide);
        // A gap, so that the mark is no part of the lamp's own shape.
        painter.setCompositionMode(QPainter::CompositionMode_Clear);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::black);
        const qreal dGap = std::max(1.0, std::round(square.width() / 16));
        painter.drawEllipse(corner.adjusted(-dGap, -dGap, dGap, dGap));
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        paintMark(painter, corner);
    });
}

QIcon markIcon() {
    return iconOf(paintMark);
}

} // namespace vellux
