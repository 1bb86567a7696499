#include "support/Files.h"

#include "support/Text.h"

#include <filesystem>
#include <fstream>
#include <system_error>

namespace fs = std::filesystem;

namespace vellux {

namespace {

constexpr std::uintmax_t kLargestFile = std::uintmax_t{1024} * 1024;

// A file is made empty, then tightened, and only then filled.
void tighten(const fs::path& path) {
    std::error_code error;
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write, error);
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
    std::error_code error;
    if (!fs::exists(strPath, error))
        std::ofstream(strPath, std::ios::binary | std::ios::app).close();
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
    std::ofstream file(strPath, std::ios::binary | std::ios::trunc);
    file << strText;
}

} // namespace vellux
