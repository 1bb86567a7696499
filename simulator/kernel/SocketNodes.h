// hidraw nodes in the test's hands, each with a light on a socket behind it.
#pragma once

#include "kernel/SocketLight.h"
#include "threads/Shared.h"

#include <cerrno>
#include <map>
#include <memory>
#include <string>

/// Any thread.
class SocketNodes {
public:
    using Listing = std::optional<std::vector<vellux::HidrawEntry>>;

    /// What a manager finds here, which must not outlive this.
    vellux::HidrawSystem system() {
        return {[this] { return listing.get(); }, [this](const auto& strPath) { return open(strPath); }};
    }
    /// The next openings of a node are refused.
    void refuse(const std::string& strPath, int nTimes) {
        m_refusals.update([&](auto& refusals) { refusals[strPath] = nTimes; });
    }
    /// The light behind a node; null when it has not been opened.
    std::shared_ptr<SocketLight> light(const std::string& strPath) const {
        return m_opened.with([&](const auto& opened) {
            const auto it = opened.find(strPath);
            return it != opened.end() ? it->second : nullptr;
        });
    }
    /// The nodes there are; absent when the system can't tell.
    vellux::Shared<Listing> listing{Listing::value_type()};

private:
    vellux::HidrawNode open(const std::string& strPath) {
        bool bRefused = false;
        m_refusals.update([&](auto& refusals) { bRefused = refusals[strPath]-- > 0; });
        if (bRefused)
            return {-1, EACCES};
        const auto light = std::make_shared<SocketLight>();
        m_opened.update([&](auto& opened) { opened[strPath] = light; });
        return light->node();
    }

    vellux::Shared<std::map<std::string, int>> m_refusals;
    vellux::Shared<std::map<std::string, std::shared_ptr<SocketLight>>> m_opened;
};
