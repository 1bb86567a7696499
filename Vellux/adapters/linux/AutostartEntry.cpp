#include "adapters/linux/AutostartEntry.h"

#include "adapters/ApplicationId.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vellux {

namespace {

constexpr std::string_view kGroup = "[Desktop Entry]";
constexpr std::size_t kLargestEntry = std::size_t{1} << 16; // bytes; ours has some 300

std::string reason(int nError) {
    return std::generic_category().message(nError);
}

std::string_view trimmed(std::string_view strText) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t nBegin = strText.find_first_not_of(kBlanks);
    if (nBegin == std::string_view::npos)
        return {};
    return strText.substr(nBegin, strText.find_last_not_of(kBlanks) - nBegin + 1);
}

/// A key's value as the file writes it; absent without that key in the entry's group.
std::optional<std::string> valueOf(const std::string& strText, std::string_view strKey) {
    bool bInGroup = false;
    for (std::size_t nBegin = 0; nBegin < strText.size();) {
        const std::size_t nEnd = std::min(strText.find('\n', nBegin), strText.size());
        const std::string_view strLine = trimmed(std::string_view(strText).substr(nBegin, nEnd - nBegin));
        nBegin = nEnd + 1;
        if (strLine.starts_with('['))
            bInGroup = strLine == kGroup;
        const std::size_t nEquals = strLine.find('=');
        if (bInGroup && nEquals != std::string_view::npos && trimmed(strLine.substr(0, nEquals)) == strKey)
            return std::string(trimmed(strLine.substr(nEquals + 1)));
    }
    return std::nullopt;
}

/// As any value of a key is written.
std::string asValue(std::string_view strText) {
    std::string strValue;
    for (const char character : strText) {
        switch (character) {
        case '\\':
            strValue += "\\\\";
            break;
        case '\n':
            strValue += "\\n";
            break;
        case '\t':
            strValue += "\\t";
            break;
        case '\r':
            strValue += "\\r";
            break;
        default:
            strValue += character;
        }
    }
    return strValue;
}

/// As one argument of a command line: quoted, and a percent sign twice, since one alone is a field code.
std::string asArgument(std::string_view strText) {
    std::string strArgument = "\"";
    for (const char character : strText) {
        if (std::string_view("\"`$\\").find(character) != std::string_view::npos)
            strArgument += '\\';
        if (character == '%')
            strArgument += '%';
        strArgument += character;
    }
    return strArgument + '"';
}

std::optional<std::string> read(const std::string& strPath) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(strPath, error)) // nothing blocks on a pipe
        return std::nullopt;
    std::ifstream file(strPath, std::ios::binary);
    std::string strText(kLargestEntry, '\0');
    file.read(strText.data(), static_cast<std::streamsize>(strText.size()));
    if (file.bad() || !file.eof())
        return std::nullopt;
    strText.resize(static_cast<std::size_t>(file.gcount()));
    return strText;
}

/// Beside the old file and then in its place, so that a full disk leaves no half of it. 0, or errno.
int replace(const std::string& strPath, std::string_view strText) {
    std::string strNew = strPath + ".XXXXXX";
    const int nFile = ::mkstemp(strNew.data()); // its mode is 0600
    if (nFile < 0)
        return errno;
    const ssize_t nWritten = ::write(nFile, strText.data(), strText.size());
    int nError = nWritten < 0 ? errno : std::cmp_equal(nWritten, strText.size()) ? 0 : ENOSPC;
    if (::close(nFile) != 0 && nError == 0)
        nError = errno;
    if (nError == 0 && std::rename(strNew.c_str(), strPath.c_str()) != 0)
        nError = errno;
    if (nError != 0)
        ::unlink(strNew.c_str());
    return nError;
}

} // namespace

AutostartEntry::AutostartEntry(const std::string& strConfigHome, std::string strProgram)
    : m_strPath(strConfigHome + "/autostart/" + kApplicationId + ".desktop"),
      m_strProgram(std::move(strProgram)) {}

bool AutostartEntry::isEnabled() const {
    const std::optional<std::string> strText = read(m_strPath);
    return strText && valueOf(*strText, "Exec") && valueOf(*strText, "Hidden") != "true" &&
           valueOf(*strText, "X-GNOME-Autostart-enabled") != "false";
}

std::optional<std::string> AutostartEntry::setEnabled(bool bEnabled) const {
    int nError = 0;
    if (bEnabled) {
        std::error_code error;
        std::filesystem::create_directories(std::filesystem::path(m_strPath).parent_path(), error);
        nError = error ? error.value() : replace(m_strPath, autostartText(m_strProgram));
    } else if (::unlink(m_strPath.c_str()) != 0 && errno != ENOENT && errno != ENOTDIR) {
        nError = errno;
    }
    return nError != 0 ? std::optional(reason(nError)) : std::nullopt;
}

std::string autostartText(const std::string& strProgram) {
    return std::string(kGroup) +
           "\nType=Application\nName=Vellux\nComment=Show your presence on a USB light\nIcon=" +
           kApplicationId + "\nExec=" + asValue(asArgument(strProgram) + " --hidden") +
           "\nTryExec=" + asValue(strProgram) +
           "\nTerminal=false\nStartupNotify=false\nX-GNOME-Autostart-enabled=true\n";
}

std::optional<std::string> runningProgram() {
    constexpr std::string_view kReplaced = " (deleted)"; // the kernel's mark
    std::error_code error;
    std::string strPath = std::filesystem::read_symlink("/proc/self/exe", error).string();
    if (error || !strPath.starts_with('/'))
        return std::nullopt;
    if (strPath.ends_with(kReplaced))
        strPath.resize(strPath.size() - kReplaced.size());
    return strPath;
}

} // namespace vellux
