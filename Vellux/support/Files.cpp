#include "support/Files.h"

#include "support/Text.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace vellux {

namespace {

constexpr std::uintmax_t kLargestFile = std::uintmax_t{1024} * 1024;
constexpr fs::perms kOthers = fs::perms::group_all | fs::perms::others_all;

constexpr mode_t kDefaultMode = 0666; // less the process's mask
constexpr mode_t kOwnerMode = 0600;

// Takes group and others their access; the owner's own stays as it is, so that a file made read-only stays so.
// Whether they have none now.
bool tighten(const fs::path& path) {
    std::error_code error;
    fs::permissions(path, kOthers, fs::perm_options::remove, error);
    const fs::file_status status = fs::status(path, error);
    return !error && (status.permissions() & kOthers) == fs::perms::none;
}

} // namespace

void createPrivateDirectory(const std::string& strPath) {
    std::error_code error;
    if (fs::is_directory(strPath, error))
        return;
    fs::create_directories(strPath, error);
    if (!error)
        fs::permissions(strPath, fs::perms::owner_all, error);
}

void createFileIfMissing(const std::string& strPath, FileAccess access) {
    // A stream could not create a file that is its owner's alone from its first moment on.
    const int nFile = ::open(strPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                             access == FileAccess::OwnerOnly ? kOwnerMode : kDefaultMode);
    if (nFile >= 0)
        ::close(nFile);
    std::error_code error;
    if (access == FileAccess::OwnerOnly && fs::is_regular_file(strPath, error))
        tighten(strPath);
}

std::optional<std::string> readTextFile(const std::string& strPath) {
    std::error_code error;
    if (!fs::is_regular_file(strPath, error) || fs::file_size(strPath, error) > kLargestFile || error)
        return std::nullopt;
    std::ifstream file(strPath, std::ios::binary);
    if (!file)
        return std::nullopt;
    std::string strText(kLargestFile, '\0');
    file.read(strText.data(), static_cast<std::streamsize>(strText.size()));
    if (file.bad())
        return std::nullopt;
    strText.resize(static_cast<std::size_t>(file.gcount()));
    if (!isUtf8(strText))
        return std::nullopt;
    return strText;
}

void writeFile(const std::string& strPath, std::string_view strText, FileAccess access) {
    createFileIfMissing(strPath, access);
    std::error_code error;
    if (!fs::is_regular_file(strPath, error))
        return; // nothing that could block or swallow the text
    if (access == FileAccess::OwnerOnly && !tighten(strPath))
        return; // somebody else's file, or a file system without modes
    std::ofstream file(strPath, std::ios::binary | std::ios::trunc);
    file << strText;
}

} // namespace vellux
