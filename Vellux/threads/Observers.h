// Those who want to be told of something.
#pragma once

#include "threads/Shared.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace vellux {

/// What keeps an observer observing; none of its owner's business what is behind it.
using Observation = std::shared_ptr<const void>;

/// Any thread observes, stops observing and notifies.
template <typename... Arguments> class Observers {
public:
    using Observer = std::function<void(Arguments...)>;

    /// Calls the observer at each notice, on the thread of whoever notifies and with no lock held, for as
    /// long as the observation lives. A notice under way on another thread may still come after that: what
    /// the observer refers to lives until all threads that notify have ended.
    [[nodiscard]] Observation add(Observer observer) {
        auto entry = std::make_shared<const Observer>(std::move(observer));
        m_entries.update([&entry](Entries& entries) {
            std::erase_if(entries, [](const auto& each) { return each.expired(); });
            entries.push_back(entry);
        });
        return entry;
    }

    /// Tells all observers, in the order in which they were added.
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
