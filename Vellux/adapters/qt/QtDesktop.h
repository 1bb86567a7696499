// The desktop port on Qt: windows, alerts, the browser.
#pragma once

#include "ports/Desktop.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

class QMessageBox;

namespace vellux {

class MainWindow;

/// Main thread only.
class QtDesktop : public Desktop {
public:
    /// What the desktop is made from.
    struct Dependencies {
        /// The user's application-support directory.
        std::string strDirectory;
        /// What the About window's link does.
        std::function<void()> openWebSite;
        /// Ends the application; called once, by the first terminate(). Returns at once.
        std::function<void()> end;
        /// Begins a process activity; empty where there is no such service.
        std::function<std::optional<ProcessActivity>(const std::string& strReason)> beginActivity;
    };

    /// `window` must outlive the desktop.
    QtDesktop(MainWindow& window, Dependencies dependencies);

    /// Blocks in a loop of its own until the alert is closed; the loop goes on running posted calls. While
    /// the application ends it returns at once and shows nothing.
    std::int32_t runModal(const Alert& alert) override VELLUX_REQUIRES(mainThreadRole);
    Window* mainWindow() override VELLUX_REQUIRES(mainThreadRole);
    std::unique_ptr<Window> loadWindow(std::string_view strDescription, WindowController& controller) override
        VELLUX_REQUIRES(mainThreadRole);
    void openUrl(const std::string& strUrl) override VELLUX_REQUIRES(mainThreadRole);
    /// An open alert is closed.
    void terminate() override VELLUX_REQUIRES(mainThreadRole);
    std::optional<ProcessActivity> beginActivityWithOptions(std::uint64_t nOptions,
                                                            const std::string& strReason) override;
    std::string applicationSupportDirectory() override { return m_dependencies.strDirectory; }

private:
    MainWindow& m_window;
    const Dependencies m_dependencies;
    bool m_bEnding VELLUX_GUARDED_BY(mainThreadRole) = false;
    // The last one on top.
    std::vector<QMessageBox*> m_openAlerts VELLUX_GUARDED_BY(mainThreadRole);
};

} // namespace vellux
