// Why it does not connect, and what helps, in words.
#pragma once

#include "app/Following.h"
#include "ports/HttpExchange.h"

#include <QString>

#include <optional>

namespace vellux {

class ConnectionLog;

/// One exchange that failed or was refused, in one or two sentences. Holds no secret: an HttpExchange has
/// none. Main thread.
[[nodiscard]] QString failureText(const HttpExchange& exchange);

/// Why the state is as it is, with what helps; "" as long as the program is connected or nothing has failed.
[[nodiscard]] QString whyNotConnected(const FollowingState& state, const ConnectionLog& log);

} // namespace vellux
