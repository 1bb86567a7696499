// The About window.
#pragma once

#include "ports/Desktop.h"

#include <QDialog>

#include <functional>

namespace vellux {

/// Says what the program is. A window of its own, that blocks no other. Main thread.
class AboutWindow : public QDialog, public Window {
    Q_OBJECT
public:
    /// Hidden at first. The controller outlives it; `openLink` opens the web site.
    AboutWindow(WindowController& controller, const std::function<void()>& openLink);

    void makeKeyAndOrderFront() override;
    void orderOut() override;
    void setLevel(WindowLevel level) override;

    /// Every way of closing it, Escape too; the controller has the say.
    void done(int nResult) override;

private:
    WindowController& m_controller;
};

} // namespace vellux
