// A value that several threads touch: copied in, copied out, never referred to.
#pragma once

#include "threads/Mutex.h"

#include <utility>

namespace vellux {

/// One value behind its own small lock. Any thread; blocks only for the length of a copy. Nothing else is
/// ever locked while the lock is held, so it may be used under every other lock.
template <typename T> class Shared {
public:
    Shared() = default;
    explicit Shared(T value) : m_value(std::move(value)) {}
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;

    /// A copy of the value.
    T get() const {
        ScopedLock lock(m_mutex);
        return m_value;
    }

    /// Replaces the value; the old one is destroyed after the lock is free again.
    void set(T value) {
        ScopedLock lock(m_mutex);
        std::swap(m_value, value);
    }

    /// Returns what `read` returns for the value in place; it must be short, lock nothing and keep no
    /// reference.
    template <typename Read> auto with(Read read) const {
        ScopedLock lock(m_mutex);
        return read(m_value);
    }

    /// Changes the value in place; `change` must be short and lock nothing.
    template <typename Change> void update(Change change) {
        ScopedLock lock(m_mutex);
        change(m_value);
    }

private:
    mutable Mutex m_mutex;
    T m_value VELLUX_GUARDED_BY(m_mutex){};
};

} // namespace vellux
