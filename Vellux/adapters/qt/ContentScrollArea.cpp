#include "adapters/qt/ContentScrollArea.h"

#include <QEvent>
#include <QLayout>

namespace vellux {

namespace {
constexpr int kLettersAcross = 20;
constexpr int kLinesDown = 6;
} // namespace

QSize ContentScrollArea::sizeHint() const {
    if (widget() == nullptr || widget()->layout() == nullptr)
        return QScrollArea::sizeHint();
    const QSize size = widget()->sizeHint();
    const int nWidth = qMax(size.width(), viewport()->width());
    const QLayout& layout = *widget()->layout();
    // What wraps needs less height in a wider window.
    return {size.width(), layout.hasHeightForWidth() ? layout.totalHeightForWidth(nWidth) : size.height()};
}

QSize ContentScrollArea::minimumSizeHint() const {
    return {kLettersAcross * fontMetrics().averageCharWidth(), kLinesDown * fontMetrics().lineSpacing()};
}

bool ContentScrollArea::eventFilter(QObject* pObject, QEvent* pEvent) {
    if (pObject == widget() && pEvent->type() == QEvent::LayoutRequest)
        emit contentChanged();
    return QScrollArea::eventFilter(pObject, pEvent);
}

} // namespace vellux
