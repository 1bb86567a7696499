// Wakes a thread out of poll().
#pragma once

namespace vellux {

/// An event descriptor. Signals that come before they are answered are one.
class WakeUp {
public:
    WakeUp();
    ~WakeUp();
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;

    /// What to poll for reading; -1 when the platform gave none.
    int descriptor() const { return m_nDescriptor; }
    /// Makes the descriptor readable. Any thread; never blocks.
    void signal();
    /// Makes it unreadable again. Never blocks.
    void clear();

private:
    const int m_nDescriptor;
};

} // namespace vellux
