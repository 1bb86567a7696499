// The titles of the Connect button. The title decides what a press does, so it is state as well as text.
// (kept-on-purpose:title-decides)
#pragma once

#include "model/Controls.h"

namespace vellux {

inline constexpr const char* kTitleConnect = "Connect";
inline constexpr const char* kTitleConnecting = "Connecting...";
inline constexpr const char* kTitleDisconnect = "Disconnect";

/// Whether the button says that there is a connection to leave. Any thread.
inline bool isConnected(const Button& button) {
    return button.title() == kTitleDisconnect;
}

} // namespace vellux
