// The proxies of the desktop's settings.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace vellux {

/// What the desktop portal (org.freedesktop.portal.ProxyResolver) says about proxies. An answer holds for all
/// URLs of a scheme, host and port until there is another: a portal that hangs or has gone changes nothing.
/// Both may be called on any thread.
struct DesktopProxies {
    /// The proxy of a URL: a URL of the proxy's, "" for none; absent where no portal has answered yet. `bAsk`
    /// asks the portal and waits for up to a second; else this returns at once, unless the portal has never
    /// been asked about this host.
    std::function<std::optional<std::string>(const std::string& strUrl, bool bAsk)> proxyOf;
    /// Asks the portal in the background, since the settings may have changed.
    std::function<void(const std::string& strUrl)> askAgain;
};

/// Both functions are empty when the environment names proxies, which come first, or without a session bus.
/// Main thread, before other threads start.
DesktopProxies desktopProxies();

} // namespace vellux
