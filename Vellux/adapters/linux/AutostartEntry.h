// The user's autostart entry, by which the session starts the program at log-in.
#pragma once

#include <optional>
#include <string>

namespace vellux {

/// The file itself is the truth: desktops have their own lists in which users switch entries off. Reads and
/// writes it at each call, which takes a moment on a disk. Any thread, one at a time.
class AutostartEntry {
public:
    /// `strConfigHome` as userConfigHome() gives it; `strProgram` the absolute path of the program to start.
    AutostartEntry(const std::string& strConfigHome, std::string strProgram);

    /// Whether the entry is there and switched on. One that can't be read is not.
    bool isEnabled() const;

    /// Writes the entry, for a start with "--hidden", or removes it. Absent when that is done; else the
    /// system's words for what is in the way ("Permission denied"), and the entry is as it was.
    [[nodiscard]] std::optional<std::string> setEnabled(bool bEnabled) const;

    /// The file's path, for a message about it.
    const std::string& path() const { return m_strPath; }

private:
    const std::string m_strPath;
    const std::string m_strProgram;
};

/// The entry's text for a program, which is quoted as desktop entries ask for.
std::string autostartText(const std::string& strProgram);

/// The path of the running program, absolute; absent where the system does not tell it. After an upgrade it
/// is the path at which the new one stands.
std::optional<std::string> runningProgram();

} // namespace vellux
