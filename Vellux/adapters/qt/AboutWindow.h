// The About window.
#pragma once

#include "ports/Desktop.h"

#include <QDialog>

#include <functional>

namespace vellux {

/// Shows what the program is. Modeless. Main thread.
class AboutWindow : public QDialog, public Window {
    Q_OBJECT
public:
    /// Hidden at first. The controller and the main window outlive it; `openLink` opens the web site.
    AboutWindow(WindowController& controller, QWidget& mainWindow, const std::function<void()>& openLink);

    void makeKeyAndOrderFront() override;
    void orderOut() override;
    void setLevel(WindowLevel level) override;

    /// All ways of closing it, including Escape; the controller decides.
    void done(int nResult) override;

private:
    WindowController& m_controller;
    QWidget& m_mainWindow;
};

} // namespace vellux
