#include "threads/WorkerThread.h"

#include "threads/Mutex.h"

#include <cstdio>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace vellux {

// Threads are joined, never detached: those that have ended whenever another one starts, the rest at the
// end. The registry is never destroyed, so that a thread may end at any time.
struct WorkerThread::Registry {
    Mutex mutex;
    std::vector<std::pair<std::shared_ptr<State>, std::thread>> threads VELLUX_GUARDED_BY(mutex);
};

WorkerThread::Registry& WorkerThread::registry() {
    static auto* instance = new Registry;
    return *instance;
}

WorkerThread::WorkerThread(std::function<void()> body, double dPriority)
    : m_state(std::make_shared<State>()), m_dPriority(dPriority) {
    m_state->body = std::move(body);
}

void WorkerThread::start() {
    Registry& all = registry();
    ScopedLock lock(all.mutex);
    std::erase_if(all.threads, [](auto& entry) {
        if (entry.first->progress != Progress::Finished)
            return false;
        entry.second.join(); // its body has returned; this takes no time
        return true;
    });
    m_state->progress = Progress::Executing;
    try {
        all.threads.emplace_back(m_state, std::thread([state = m_state] {
                                     state->body();
                                     state->body = nullptr; // what it captured goes with it
                                     state->progress = Progress::Finished;
                                 }));
    } catch (const std::system_error&) {
        std::fputs("vellux: can't create a thread\n", stderr);
        m_state->body = nullptr;
        m_state->progress = Progress::Finished;
    }
}

void WorkerThread::joinAll() {
    std::vector<std::pair<std::shared_ptr<State>, std::thread>> threads;
    {
        Registry& all = registry();
        ScopedLock lock(all.mutex);
        threads.swap(all.threads);
    }
    for (auto& entry : threads)
        entry.second.join();
}

} // namespace vellux
