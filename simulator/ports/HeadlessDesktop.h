// A desktop with nobody in front of it.
#pragma once

#include "platform/Desktop.h"
#include "platform/MainThread.h"
#include "ports/Changes.h"
#include "ports/Console.h"
#include "support/Shared.h"

#include <functional>
#include <string>
#include <vector>

namespace vellux::simulator {

/// Alerts are printed as `alert MESSAGE` and dismissed at once by their first button. There are no windows
/// and no browser, and nothing keeps the system awake.
class HeadlessDesktop : public Desktop {
public:
    struct Surroundings {
        MainThread& mainThread;
        Console& console;
        Changes& changes;
        /// Stands in for the user's directory.
        std::string strDirectory;
        /// What ending the application means; run on the main thread, from its queue.
        std::function<void()> end;
    };

    explicit HeadlessDesktop(Surroundings surroundings) : m_around(std::move(surroundings)) {}

    std::int32_t runModal(const Alert& alert) override;
    Window* mainWindow() override { return nullptr; }
    std::unique_ptr<Window> loadWindow(std::string_view strDescription, AboutDialog& controller) override;
    void openUrl(const std::string&) override {}
    void terminate() override { m_around.mainThread.post(m_around.end); }
    std::optional<ProcessActivity> beginActivityWithOptions(std::uint64_t nOptions,
                                                            const std::string& strReason) override;
    std::string applicationSupportDirectory() override { return m_around.strDirectory; }

    /// The messages of all alerts so far, oldest first. Any thread.
    std::vector<std::string> alerts() const { return m_alerts.get(); }

private:
    const Surroundings m_around;
    Shared<std::vector<std::string>> m_alerts;
};

} // namespace vellux::simulator
