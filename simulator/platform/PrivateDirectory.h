// A directory of this run's own, so that nothing of the user's is read or written.
#pragma once

#include <memory>
#include <string>

namespace vellux::simulator {

/// A new, empty directory below the system's temporary one, for its owner alone (0700); removed with all that
/// is in it when the object goes.
class PrivateDirectory {
public:
    /// Null when it can't be made.
    static std::unique_ptr<PrivateDirectory> create();
    ~PrivateDirectory();
    PrivateDirectory(const PrivateDirectory&) = delete;
    PrivateDirectory& operator=(const PrivateDirectory&) = delete;

    /// Absolute, without a trailing slash.
    const std::string& path() const { return m_strPath; }

private:
    explicit PrivateDirectory(std::string strPath) : m_strPath(std::move(strPath)) {}

    const std::string m_strPath;
};

} // namespace vellux::simulator
