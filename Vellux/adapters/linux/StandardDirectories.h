// Where a user's files go (XDG Base Directory Specification).
#pragma once

#include <optional>
#include <string>

namespace vellux {

/// What the directories are derived from.
struct UserEnvironment {
    std::optional<std::string> strXdgDataHome; ///< XDG_DATA_HOME; absent when unset
    std::optional<std::string> strHome;        ///< HOME; absent when unset
    std::optional<std::string> strAccountHome; ///< home directory of the account; absent when unknown
    std::optional<std::string> strXdgConfigHome = std::nullopt; ///< XDG_CONFIG_HOME; absent when unset
};

/// The directory of the user's data, absolute, without a trailing slash (but for the root itself):
/// XDG_DATA_HOME, else ".local/share" below HOME, else below the account's home directory. A value that is
/// empty or relative counts as unset. Without any home it is below the root directory.
std::string userDataHome(const UserEnvironment& environment);

/// The directory of the user's choices, found in the same way: XDG_CONFIG_HOME, else ".config" below the
/// home.
std::string userConfigHome(const UserEnvironment& environment);

/// The calling process's environment. Looks the account up, which may ask a directory service over the
/// network. Not while another thread changes the environment.
UserEnvironment readUserEnvironment();

} // namespace vellux
