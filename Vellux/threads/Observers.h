// Observers, and the notifications that they get.
#pragma once

#include "threads/Shared.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace vellux {

/// Subscription handle; destroying it unsubscribes.
using Observation = std::shared_ptr<const void>;

/// Any thread may subscribe, unsubscribe and notify.
template <typename... Arguments> class Observers {
public:
    using Observer = std::function<void(Arguments...)>;

    /// Calls the observer on each notification, on the notifying thread and with no lock of this object held,
    /// as long as the observation lives. A notification that is under way on another thread may still arrive
    /// after that, so what the observer refers to must live until all notifying threads have ended.
    [[nodiscard]] Observation add(Observer observer) {
        auto entry = std::make_shared<const Observer>(std::move(observer));
        m_entries.update([&entry](Entries& entries) {
            std::erase_if(entries, [](const auto& each) { return each.expired(); });
            entries.push_back(entry);
        });
        return entry;
    }

    /// Calls all observers, in the order in which they were added.
    void notify(Arguments... arguments) const {
        for (const auto& each : m_entries.get())
            if (const auto observer = each.lock())
                (*observer)(arguments...);
    }

private:
    using Entries = std::vector<std::weak_ptr<const Observer>>;
    Shared<Entries> m_entries;
};

} // namespace vellux
