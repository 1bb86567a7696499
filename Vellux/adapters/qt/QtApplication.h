// The toolkit's application object, set up as this program wants it.
#pragma once

#include <QApplication>

#include <functional>

namespace vellux {

class MainWindow;

/// Created first in main(), on the main thread. Without a display the constructor says so on standard error
/// and ends the process with status 1.
class QtApplication : public QApplication {
    Q_OBJECT
public:
    /// The arguments are Qt's; they must outlive the object.
    QtApplication(int& nArguments, char** arguments);

    /// Runs the loop until the window has been painted once, but for at most a second (it may stay hidden).
    /// The user's input is left for later.
    void waitForFirstPaint(MainWindow& window);

    /// `lost` is called when the display has gone away, on each thread that notices: the main thread, one of
    /// Qt's, or both at once. When it returns, that thread ends the process with status 1. An empty function
    /// removes it.
    static void onDisplayLost(std::function<void()> lost);

    /// Runs the loop until quitSoon() or the end of the session; returns at once if quitSoon() has been
    /// called before. Returns the exit status.
    int run();
    /// Ends run() and every loop inside it, such as an open alert's. Main thread; returns at once.
    void quitSoon();

private:
    bool m_bQuitting = false;
};

} // namespace vellux
