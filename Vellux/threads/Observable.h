// A value whose changes can be observed.
#pragma once

#include "threads/Observers.h"
#include "threads/Shared.h"

#include <utility>

namespace vellux {

/// One value that reports its changes. Any thread reads and writes.
template <typename T> class Observable {
public:
    using Observer = Observers<>::Observer;

    T get() const { return m_value.get(); }
    void set(T value) {
        update([&value](T& current) { current = std::move(value); });
    }
    /// Changes the value in place; `change` must be short and lock nothing.
    template <typename Change> void update(Change change) {
        bool bChanged = false;
        m_value.update([&](T& current) {
            const T before = current;
            change(current);
            bChanged = !(current == before);
        });
        if (bChanged)
            m_observers.notify();
    }

    /// Calls the observer after every change, when the new value can be read, on the thread that made it and
    /// with no lock of this object held; writing an equal value is no change. Any thread. What the observer
    /// refers to must live until every worker thread has ended.
    [[nodiscard]] Observation observe(Observer observer) { return m_observers.add(std::move(observer)); }

private:
    Shared<T> m_value;
    Observers<> m_observers;
};

} // namespace vellux
