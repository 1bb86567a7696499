// The size of the main window, and where it stands.
#pragma once

#include <QObject>
#include <QPoint>
#include <QSize>
#include <QWidget>

#include <optional>

namespace vellux {

class ContentScrollArea;

/// Keeps a window as high as its content, unless the user made it higher or lower, and never larger than the
/// screen; brings it back where it was when it is shown again. Main thread; destroyed before both.
class WindowFit {
public:
    WindowFit(QWidget& window, ContentScrollArea& content);
    WindowFit(const WindowFit&) = delete;
    WindowFit& operator=(const WindowFit&) = delete;

    /// Before the window is shown.
    void beforeShow();
    /// Before the window is hidden.
    void beforeHide();

private:
    /// What shows the whole content, or as much as fits on the screen. Without a frame.
    QSize bestSize() const;
    void follow();

    QWidget& m_window;
    ContentScrollArea& m_content;
    QSize m_best;                  // when it was asked for last; empty before
    std::optional<QPoint> m_place; // without the frame, when it was hidden
    QObject m_receiver;
};

} // namespace vellux
