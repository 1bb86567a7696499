#include "adapters/qt/LampView.h"

#include "adapters/qt/LampDrawing.h"

#include <QEvent>
#include <QFontMetrics>
#include <QPainter>

namespace vellux {

namespace {
constexpr int kLines = 4; // of text
} // namespace

LampView::LampView(QWidget* pParent) : QWidget(pParent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAccessibleDescription(lampDescription(m_lamp));
}

void LampView::setLamp(const LampState& lamp, const QString& strWords) {
    if (strWords != accessibleDescription())
        setAccessibleDescription(strWords); // announced
    if (lamp == m_lamp)
        return;
    m_lamp = lamp;
    update();
}

QSize LampView::sizeHint() const {
    const int nSide = kLines * fontMetrics().lineSpacing();
    return {nSide, nSide};
}

void LampView::paintEvent(QPaintEvent*) {
    const qreal dSide = qMin(width(), height());
    const QRectF square((width() - dSide) / 2, (height() - dSide) / 2, dSide, dSide);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintLamp(painter, square, m_lamp, palette().color(QPalette::WindowText));
}

void LampView::changeEvent(QEvent* pEvent) {
    if (pEvent->type() == QEvent::FontChange)
        updateGeometry();
    QWidget::changeEvent(pEvent);
}

} // namespace vellux
