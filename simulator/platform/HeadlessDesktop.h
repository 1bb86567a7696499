// A desktop with nobody in front of it.
#pragma once

#include "platform/Changes.h"
#include "platform/Console.h"
#include "ports/Desktop.h"
#include "threads/MainThread.h"
#include "threads/Shared.h"

#include <functional>
#include <string>
#include <vector>

namespace vellux::simulator {

/// Alerts are printed as `alert MESSAGE` and dismissed at once by their first button. There are no windows
/// and no browser, and nothing keeps the system awake.
class HeadlessDesktop : public Desktop {
public:
    struct Dependencies {
        MainThread& mainThread;
        Console& console;
        Changes& changes;
        /// Stands in for the user's directory.
        std::string strDirectory;
        /// What ending the application means; run on the main thread, from its queue.
        std::function<void()> end;
    };

    explicit HeadlessDesktop(Dependencies dependencies) : m_dependencies(std::move(dependencies)) {}

    std::int32_t runModal(const Alert& alert) override;
    Window* mainWindow() override { return nullptr; }
    std::unique_ptr<Window> loadWindow(std::string_view strDescription,
                                       WindowController& controller) override;
    void openUrl(const std::string&) override {}
    void terminate() override { m_dependencies.mainThread.post(m_dependencies.end); }
    std::optional<ProcessActivity> beginActivityWithOptions(std::uint64_t nOptions,
                                                            const std::string& strReason) override;
    std::string applicationSupportDirectory() override { return m_dependencies.strDirectory; }

    /// The messages of all alerts so far, oldest first. Any thread.
    std::vector<std::string> alerts() const { return m_alerts.get(); }

private:
    const Dependencies m_dependencies;
    Shared<std::vector<std::string>> m_alerts;
};

} // namespace vellux::simulator
