#include "platform/HeadlessDesktop.h"

namespace vellux::simulator {

std::int32_t HeadlessDesktop::runModal(const Alert& alert) {
    m_dependencies.console.print("alert " + alert.strInformativeText);
    m_alerts.update([&](std::vector<std::string>& alerts) { alerts.push_back(alert.strInformativeText); });
    m_dependencies.changes.notify();
    return kAlertFirstButtonReturn;
}

std::unique_ptr<Window> HeadlessDesktop::loadWindow(std::string_view, WindowController&) {
    return nullptr;
}

std::optional<ProcessActivity> HeadlessDesktop::beginActivityWithOptions(std::uint64_t, const std::string&) {
    return std::nullopt;
}

} // namespace vellux::simulator
