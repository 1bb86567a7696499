// The one process-wide instance that each of the four classes above the driver has.
#pragma once

#include "threads/Mutex.h"

#include <atomic>

namespace vellux {

/// Where a class keeps its shared instance: a pointer that is set once, and the lock of its creation.
template <typename T> struct SharedInstanceSlot {
    std::atomic<T*> instance{nullptr};
    Mutex creation;
};

/// The instance in `slot`, created by `create` on the first call. Any thread. Only a call that finds no
/// instance takes the lock. The instance is never destroyed: worker threads may outlive every static.
template <typename T, typename Create> T& sharedInstance(SharedInstanceSlot<T>& slot, Create create) {
    T* existing = slot.instance.load(std::memory_order_acquire);
    if (existing != nullptr)
        return *existing;
    ScopedLock lock(slot.creation);
    existing = slot.instance.load(std::memory_order_relaxed);
    if (existing == nullptr) {
        existing = create();
        slot.instance.store(existing, std::memory_order_release);
    }
    return *existing;
}

} // namespace vellux
