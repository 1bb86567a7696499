#include "adapters/qt/WindowFit.h"

#include "adapters/qt/ContentScrollArea.h"

#include <QScreen>
#include <QStyle>
#include <QWindow>

#include <utility>

namespace vellux {

namespace {

// A window manager tells the frame's size only once it has made one.
QSize frameOf(const QWidget& window) {
    const QSize frame = window.frameGeometry().size() - window.size();
    const int nTitleBar = window.style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, &window);
    return frame.isNull() ? QSize(0, nTitleBar) : frame;
}

} // namespace

WindowFit::WindowFit(QWidget& window, ContentScrollArea& content) : m_window(window), m_content(content) {
    QObject::connect(&m_content, &ContentScrollArea::contentChanged, &m_receiver, [this] { follow(); });
}

QSize WindowFit::bestSize() const {
    const QSize room = m_window.screen()->availableGeometry().size() - frameOf(m_window);
    QSize size = m_content.sizeHint();
    if (size.height() > room.height()) // room for the scroll bar
        size.rwidth() += m_window.style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, &m_window);
    return size.boundedTo(room);
}

void WindowFit::beforeShow() {
    // While hidden, a layout doesn't tell the one around it that it needs more. From the innermost outwards.
    const auto parts = m_window.findChildren<QWidget*>();
    for (QWidget* const pPart : parts)
        pPart->ensurePolished(); // to have its style's size
    for (auto part = parts.crbegin(); part != parts.crend(); ++part)
        (*part)->updateGeometry();
    if (m_best.isEmpty()) {
        m_best = bestSize();
        m_window.resize(m_best);
    } else {
        follow();
    }
    // Without being told, a window manager places a window anew each time. On a screen that has gone it may.
    QWindow* const pHandle = m_window.windowHandle();
    if (m_place && !m_window.isMaximized() && pHandle != nullptr &&
        m_window.screen()->virtualGeometry().contains(*m_place))
        pHandle->setPosition(*m_place); // QWidget::move() ignores a place that it has already
}

void WindowFit::beforeHide() {
    if (!m_window.isMaximized() && !m_window.isFullScreen())
        m_place = m_window.geometry().topLeft();
}

void WindowFit::follow() {
    if (m_best.isEmpty()) // not yet shown
        return;
    const QSize best = bestSize();
    const QSize before = std::exchange(m_best, best);
    if (m_window.isMaximized() || m_window.isFullScreen())
        return;
    const QSize now = m_window.size();
    const bool bLower = now.height() < before.height(); // so the user wants it
    const bool bHigher = now.height() > before.height();
    const int nHeight = bLower ? now.height() : bHigher ? qMax(now.height(), best.height()) : best.height();
    const int nWidth = now.width() < before.width() ? now.width() : qMax(now.width(), best.width());
    m_window.resize(nWidth, nHeight);
}

} // namespace vellux
