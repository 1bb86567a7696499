// The proxies of the desktop's settings.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace vellux {

/// Asks the desktop portal (org.freedesktop.portal.ProxyResolver) for the proxy of a URL: a URL of the proxy's, "" for
/// none; absent where there is no portal. The function may be called on any thread and blocks a second at most. Empty
/// when the environment names proxies, which come first, or without a session bus. Main thread, before any other.
std::function<std::optional<std::string>(const std::string& strUrl, bool bAsk)> desktopProxies();

} // namespace vellux
