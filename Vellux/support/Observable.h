// A value that somebody wants to see change.
#pragma once

#include "support/Shared.h"

#include <functional>
#include <utility>

namespace vellux {

/// One value, with an observer who is told of each change. Any thread reads and writes.
template <typename T> class Observable {
public:
    /// Told of every change, on the thread that made it, with no lock held, after the new value can be read. A
    /// write of the same value is no change.
    using Observer = std::function<void()>;

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
        const Observer observer = bChanged ? m_observer.get() : Observer{};
        if (observer)
            observer();
    }

    /// One observer; an empty one removes it. Set while no other thread writes the value: what an observer
    /// refers to lives until every worker thread has ended.
    void setObserver(Observer observer) { m_observer.set(std::move(observer)); }

private:
    Shared<T> m_value;
    Shared<Observer> m_observer;
};

} // namespace vellux
