// A value that somebody wants to see change.
#pragma once

#include "threads/Observers.h"
#include "threads/Shared.h"

#include <utility>

namespace vellux {

/// One value whose changes are told. Any thread reads and writes.
template <typename T> class Observable {
public:
    using Observer = Observers<>::Observer;

    T get() const { return m_value.get(); }
    void set(T value) {
        update([&value](T& current) { current = std::move(value); });
    }
    /// Changes the value in place; `change` is short and locks nothing.
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

    /// Tells of every change, on the thread that made it, with no lock held, after the new value can be read;
    /// a write of the same value is no change. Any thread; what the observer refers to lives until every
    /// worker thread has ended.
    [[nodiscard]] Observation observe(Observer observer) { return m_observers.add(std::move(observer)); }

private:
    Shared<T> m_value;
    Observers<> m_observers;
};

} // namespace vellux
