// What befalls requests on their way: waits, wrong answers, broken connections.
#pragma once

#include "server/Reply.h"
#include "server/Route.h"
#include "threads/Mutex.h"

#include <chrono>
#include <deque>
#include <map>
#include <optional>

namespace vellux::simulator {

/// What is done to one or more requests of a route.
struct Interference {
    /// Before the request is looked at.
    std::chrono::milliseconds delay{0};
    /// Instead of the server's own answer, whatever the request says.
    std::optional<Reply> reply;
    /// Where the connection breaks.
    CutOff cutOff = CutOff::Never;
    /// How many requests in a row it is done to.
    int nTimes = 1;
};

/// Interferences that wait for the next requests of their routes, in the order in which they were added. Any
/// thread.
class Interferences {
public:
    void add(Route route, Interference interference);
    /// What to do to the request that has just come; absent: nothing.
    std::optional<Interference> take(Route route);

private:
    Mutex m_mutex;
    std::map<Route, std::deque<Interference>> m_waiting VELLUX_GUARDED_BY(m_mutex);
};

} // namespace vellux::simulator
