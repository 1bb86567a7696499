// Ctrl+Q, wherever the focus is.
#pragma once

#include <QObject>
#include <QWidget>

#include <functional>

namespace vellux {

/// Ends the program from every window, also with a list or an alert open, which a shortcut of the main window
/// doesn't reach. Main thread.
class QuitKey : public QObject {
public:
    QuitKey(QWidget& window, std::function<void()> quit);

protected:
    /// Sees the keys that no shortcut has taken.
    bool eventFilter(QObject* pObject, QEvent* pEvent) override;

private:
    const std::function<void()> m_quit;
};

} // namespace vellux
