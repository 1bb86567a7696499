// Wakes a thread out of poll().
#pragma once

namespace vellux {

/// An eventfd. Signals before the next clear() count as one.
class WakeUp {
public:
    WakeUp();
    ~WakeUp();
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;

    /// To be polled for reading; -1 if it could not be created.
    int descriptor() const { return m_nDescriptor; }
    /// Makes the descriptor readable. Any thread; never blocks.
    void signal();
    /// Makes it unreadable again. Never blocks.
    void clear();

private:
    const int m_nDescriptor;
};

} // namespace vellux
