// Whether it is a proxy that curl connects to. Before 8.7 curl does not say so.
#pragma once

#include <optional>
#include <string>

namespace vellux {

/// The proxy that curl takes for a URL, unless the environment's "no_proxy" excepts the host: what was chosen
/// for it, else what the environment names; "" for none. Any thread.
[[nodiscard]] std::string proxyFor(const std::string& strUrl, const std::optional<std::string>& strChosen);

/// The port of a proxy that is named as for curl; 0 for a name that is malformed or empty. Any thread.
[[nodiscard]] int proxyPort(const std::string& strProxy);

} // namespace vellux
