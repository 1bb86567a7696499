#include "server/Route.h"

namespace vellux::simulator {

namespace {

struct Row {
    std::string_view strName;
    Route route;
    bool bOfApplication; // the path follows that of an application
    std::string_view strMethod;
    std::string_view strPath;
};

constexpr Row kRows[] = {
    {"discovery", Route::Discovery, false, "GET", "/"},
    {"token", Route::Token, false, "POST", "/WebTicket/oauthtoken"},
    {"user", Route::User, false, "GET", "/Autodiscover/AutodiscoverService.svc/root/oauth/user"},
    {"applications", Route::Applications, false, "POST", kApplicationsPath},
    {"makeMeAvailable", Route::MakeMeAvailable, true, "POST", "/me/makeMeAvailable"},
    {"presence", Route::Presence, true, "GET", "/me/presence"},
    {"events", Route::Events, true, "GET", "/events"},
};

// Splits "/ucwa/oauth/v1/applications/ID/rest" into ID and "/rest"; false for any other path.
bool splitApplication(std::string_view strPath, std::string_view& strID, std::string_view& strRest) {
    if (!strPath.starts_with(kApplicationsPath))
        return false;
    strPath.remove_prefix(kApplicationsPath.size());
    if (!strPath.starts_with('/'))
        return false;
    strPath.remove_prefix(1);
    const std::size_t nSlash = strPath.find('/');
    if (nSlash == std::string_view::npos)
        return false;
    strID = strPath.substr(0, nSlash);
    strRest = strPath.substr(nSlash);
    return true;
}

} // namespace

std::optional<Route> routeNamed(std::string_view strName) {
    for (const Row& row : kRows)
        if (row.strName == strName)
            return row.route;
    return std::nullopt;
}

std::optional<Destination> destinationOf(std::string_view strMethod, std::string_view strTarget) {
    const std::size_t nQuestionMark = strTarget.find('?');
    const std::string_view strPath = strTarget.substr(0, nQuestionMark);
    const std::string_view strQuery =
        nQuestionMark == std::string_view::npos ? "" : strTarget.substr(nQuestionMark + 1);
    std::string_view strID;
    std::string_view strRest;
    const bool bOfApplication = splitApplication(strPath, strID, strRest);
    for (const Row& row : kRows)
        if (row.strMethod == strMethod && row.bOfApplication == bOfApplication &&
            row.strPath == (bOfApplication ? strRest : strPath))
            return Destination{row.route, std::string(strID), std::string(strQuery)};
    return std::nullopt;
}

} // namespace vellux::simulator
