#include "adapters/linux/StandardDirectories.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace vellux {

namespace {

bool isAbsolute(const std::optional<std::string>& strPath) {
    return strPath && strPath->starts_with('/');
}

std::string withoutTrailingSlashes(std::string strPath) {
    while (strPath.ends_with('/'))
        strPath.pop_back();
    return strPath;
}

std::optional<std::string> variable(const char* strName) {
    const char* strValue = std::getenv(strName);
    return strValue != nullptr ? std::optional<std::string>(strValue) : std::nullopt;
}

std::optional<std::string> accountHome() {
    constexpr std::size_t kLargestEntry = std::size_t{1} << 20;
    passwd entry{};
    passwd* pFound = nullptr;
    for (std::vector<char> buffer(1024); buffer.size() <= kLargestEntry; buffer.resize(2 * buffer.size())) {
        const int nError = ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &pFound);
        if (nError == ERANGE)
            continue; // more room
        if (nError != 0 || pFound == nullptr || pFound->pw_dir == nullptr)
            return std::nullopt;
        return std::string(pFound->pw_dir);
    }
    return std::nullopt;
}

/// What a variable names, else a directory below the home.
std::string directory(const std::optional<std::string>& strGiven, const UserEnvironment& environment,
                      const char* strBelowHome) {
    if (isAbsolute(strGiven)) {
        const std::string strPath = withoutTrailingSlashes(*strGiven);
        return strPath.empty() ? "/" : strPath;
    }
    std::string strHome; // the root
    if (isAbsolute(environment.strHome))
        strHome = *environment.strHome;
    else if (isAbsolute(environment.strAccountHome))
        strHome = *environment.strAccountHome;
    return withoutTrailingSlashes(strHome) + strBelowHome;
}

} // namespace

std::string userDataHome(const UserEnvironment& environment) {
    return directory(environment.strXdgDataHome, environment, "/.local/share");
}

std::string userConfigHome(const UserEnvironment& environment) {
    return directory(environment.strXdgConfigHome, environment, "/.config");
}

UserEnvironment readUserEnvironment() {
    return {variable("XDG_DATA_HOME"), variable("HOME"), accountHome(), variable("XDG_CONFIG_HOME")};
}

} // namespace vellux
