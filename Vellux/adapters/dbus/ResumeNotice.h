// The notice that the system has woken from sleep.
#pragma once

#include <functional>
#include <memory>

namespace vellux {

class ResumeListener;

/// Listens to logind's PrepareForSleep on the system bus for as long as it lives. Main thread.
class ResumeNotice {
public:
    /// `resumed` is called on the main thread's loop after each wake-up, possibly twice for one. Without a
    /// system bus it is never called.
    explicit ResumeNotice(std::function<void()> resumed);
    ~ResumeNotice();
    ResumeNotice(const ResumeNotice&) = delete;
    ResumeNotice& operator=(const ResumeNotice&) = delete;

private:
    std::unique_ptr<ResumeListener> m_listener;
};

} // namespace vellux
