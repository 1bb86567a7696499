// The main thread's queue of calls, run by Qt's loop.
#pragma once

#include "threads/CallQueue.h"

#include <QObject>

#include <atomic>

namespace vellux {

/// A CallQueue that Qt wakes: for each batch of calls one event is posted to an object of the main thread.
/// Created on the main thread once the application object exists, and destroyed there after every thread that
/// posts has ended.
class QtMainThread : public CallQueue {
public:
    QtMainThread();
    ~QtMainThread() override;

private:
    class Receiver : public QObject {
    public:
        explicit Receiver(CallQueue& queue) : m_queue(queue) {}
        /// Any thread.
        void wake();

    protected:
        bool event(QEvent* event) override;

    private:
        CallQueue& m_queue;
        std::atomic<bool> m_bWoken{false};
    };

    Receiver m_receiver;
};

} // namespace vellux
