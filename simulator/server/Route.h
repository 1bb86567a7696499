// The resources of the presence server and the paths that lead to them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vellux::simulator {

enum class Route { Discovery, Token, User, Applications, MakeMeAvailable, Presence, Events };

/// The name of a route in scripts: "discovery", "token", "user", "applications", "makeMeAvailable",
/// "presence" or "events"; absent for any other.
std::optional<Route> routeNamed(std::string_view strName);

/// Where the user's applications live; an application's own path is this, "/" and its id.
constexpr std::string_view kApplicationsPath = "/ucwa/oauth/v1/applications";

/// Where a request goes.
struct Destination {
    Route route = Route::Discovery;
    std::string strApplication; ///< the application's id; "" where the route names none
    std::string strQuery;       ///< what follows the "?"
};

/// The destination of a request; absent when there is no such resource, or not with this method.
std::optional<Destination> destinationOf(std::string_view strMethod, std::string_view strTarget);

} // namespace vellux::simulator
