// A mutex whose guarded fields say so in their declaration. Under clang the annotations are checked at
// compile time (-Wthread-safety); under other compilers they are documentation.
#pragma once

#include <mutex>

#if defined(__clang__)
#define VELLUX_ANNOTATION(x) __attribute__((x))
#else
#define VELLUX_ANNOTATION(x)
#endif

#define VELLUX_CAPABILITY(x) VELLUX_ANNOTATION(capability(x))
#define VELLUX_SCOPED_CAPABILITY VELLUX_ANNOTATION(scoped_lockable)
#define VELLUX_GUARDED_BY(x) VELLUX_ANNOTATION(guarded_by(x))
#define VELLUX_REQUIRES(x) VELLUX_ANNOTATION(requires_capability(x))
#define VELLUX_ACQUIRE(...) VELLUX_ANNOTATION(acquire_capability(__VA_ARGS__))
#define VELLUX_RELEASE(...) VELLUX_ANNOTATION(release_capability(__VA_ARGS__))
#define VELLUX_ASSERT_CAPABILITY(x) VELLUX_ANNOTATION(assert_capability(x))

namespace vellux {

/// An annotated std::mutex. BasicLockable, so std::condition_variable_any waits on it.
class VELLUX_CAPABILITY("mutex") Mutex {
public:
    void lock() VELLUX_ACQUIRE() { m_mutex.lock(); }
    void unlock() VELLUX_RELEASE() { m_mutex.unlock(); }

private:
    std::mutex m_mutex;
};

/// An annotated std::recursive_mutex.
class VELLUX_CAPABILITY("mutex") RecursiveMutex {
public:
    void lock() VELLUX_ACQUIRE() { m_mutex.lock(); }
    void unlock() VELLUX_RELEASE() { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex;
};

/// Holds a mutex for one scope.
template <typename MutexType> class VELLUX_SCOPED_CAPABILITY ScopedLock {
public:
    explicit ScopedLock(MutexType& mutex) VELLUX_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.lock(); }
    ~ScopedLock() VELLUX_RELEASE() { m_mutex.unlock(); }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    MutexType& m_mutex;
};

} // namespace vellux
