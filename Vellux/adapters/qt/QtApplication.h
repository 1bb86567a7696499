// The toolkit's application object, set up as this program wants it.
#pragma once

#include <QApplication>

#include <functional>

namespace vellux {

class MainWindow;

/// Made first in main(), on the main thread. Without a display to show a window on, the constructor says so
/// on standard error and ends the process with status 1.
class QtApplication : public QApplication {
    Q_OBJECT
public:
    /// The arguments are Qt's; they must outlive the object.
    QtApplication(int& nArguments, char** arguments);

    /// Runs the loop until the window has been painted once, though a second at most (a window can stay
    /// unseen), and leaves the user's input for later.
    void waitForFirstPaint(MainWindow& window);

    /// `lost` is called when the display has gone away, by each thread that finds out: the main thread or one
    /// of Qt's, also at the same time. A thread that returns from it ends the process, with status 1. An
    /// empty function takes it back.
    static void onDisplayLost(std::function<void()> lost);

    /// Runs the loop until quitSoon(), or until the session ends; at once over when that has been called
    /// before. The exit status.
    int run();
    /// Ends run() and every loop inside it, such as an open alert's. Main thread; returns at once.
    void quitSoon();

private:
    bool m_bQuitting = false;
};

} // namespace vellux
