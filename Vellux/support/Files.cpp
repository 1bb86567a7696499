#include "support/Files.h"

#include "support/Text.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <new>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace vellux {

namespace {

constexpr std::size_t kLargestFile = std::size_t{1024} * 1024;
constexpr std::size_t kPiece = 4096; // our files fit into one

constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
constexpr mode_t kDefaultMode = 0666; // less the process's mask
constexpr mode_t kOwnerMode = 0600;

template <typename Call> bool succeeds(Call call) {
    while (call() != 0) {
        if (errno != EINTR)
            return false;
    }
    return true;
}

// A regular file, open while the object lives. Anything else counts as not open: a pipe or a device could
// block, or swallow the text. Each operation returns whether it succeeded.
class File {
public:
    File(const std::string& strPath, int nAccess)
        : m_nFile(::open(strPath.c_str(), nAccess | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {
        m_bRegular = m_nFile >= 0 && ::fstat(m_nFile, &m_status) == 0 && S_ISREG(m_status.st_mode);
    }
    ~File() {
        if (m_nFile >= 0)
            ::close(m_nFile);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isOpen() const { return m_bRegular; }
    /// As the file was found.
    const struct stat& status() const { return m_status; }

    /// From its beginning on, `nMost` bytes at most.
    bool read(std::string& strText, std::size_t nMost) const {
        strText.clear();
        for (;;) {
            const std::size_t nRead = strText.size();
            const std::size_t nWanted = std::min(kPiece, nMost - nRead);
            strText.resize(nRead + nWanted);
            const ssize_t nMore =
                ::pread(m_nFile, strText.data() + nRead, nWanted, static_cast<off_t>(nRead));
            strText.resize(nRead + (nMore > 0 ? static_cast<std::size_t>(nMore) : 0));
            if (nMore < 0 && errno != EINTR)
                return false;
            if (nMore == 0)
                return true;
        }
    }

    /// Whether there is room for so many bytes. A file system that can't reserve any says yes.
    bool reserve(std::size_t nBytes) const {
        return succeeds([&] {
                   return ::fallocate(m_nFile, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(nBytes));
               }) ||
               (errno != ENOSPC && errno != EDQUOT);
    }

    /// From its beginning on.
    bool write(std::string_view strText) const {
        if (::lseek(m_nFile, 0, SEEK_SET) != 0)
            return false;
        while (!strText.empty()) {
            const ssize_t nWritten = ::write(m_nFile, strText.data(), strText.size());
            if (nWritten > 0)
                strText.remove_prefix(static_cast<std::size_t>(nWritten));
            else if (nWritten == 0 || errno != EINTR)
                return false;
        }
        return true;
    }

    bool cut(off_t nLength) const {
        return succeeds([&] { return ::ftruncate(m_nFile, nLength); });
    }

private:
    const int m_nFile;
    struct stat m_status {};
    bool m_bRegular = false;
};

// Removes access for group and others; the owner's stays, so that a read-only file stays read-only.
void tighten(const std::string& strPath) {
    struct stat status {};
    if (::stat(strPath.c_str(), &status) == 0 && S_ISREG(status.st_mode) && (status.st_mode & kOthers) != 0)
        ::chmod(strPath.c_str(), status.st_mode & ~kOthers);
}

// Where modes can't be changed, the user's own file is as private as the file system allows.
bool isPrivate(const struct stat& status) {
    return (status.st_mode & kOthers) == 0 || status.st_uid == ::geteuid();
}

} // namespace

void createPrivateDirectory(const std::string& strPath) try {
    std::error_code error;
    if (fs::is_directory(strPath, error))
        return;
    fs::create_directories(strPath, error);
    if (!error)
        fs::permissions(strPath, fs::perms::owner_all, error);
} catch (const std::bad_alloc&) {
}

void createFileIfMissing(const std::string& strPath, FileAccess access) {
    const int nFile = ::open(strPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                             access == FileAccess::OwnerOnly ? kOwnerMode : kDefaultMode);
    if (nFile >= 0)
        ::close(nFile);
    if (access == FileAccess::OwnerOnly)
        tighten(strPath);
}

std::optional<std::string> readTextFile(const std::string& strPath) try {
    const File file(strPath, O_RDONLY);
    std::string strText;
    if (!file.isOpen() || !file.read(strText, kLargestFile + 1) || strText.size() > kLargestFile ||
        !isUtf8(strText))
        return std::nullopt;
    return strText;
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

void writeFile(const std::string& strPath, std::string_view strText, FileAccess access) try {
    createFileIfMissing(strPath, access);
    const File file(strPath, O_RDWR);
    if (!file.isOpen() || (access == FileAccess::OwnerOnly && !isPrivate(file.status())))
        return;
    std::string strBefore;
    if (!file.read(strBefore, strText.size()) || !file.reserve(strText.size()))
        return;
    if (file.write(strText) && file.cut(static_cast<off_t>(strText.size())))
        return;
    file.write(strBefore); // into space that it already has
    file.cut(file.status().st_size);
} catch (const std::bad_alloc&) {
}

// With the effective user's rights, as open() has them.
bool isWritable(const std::string& strPath) try {
    struct stat status {};
    if (::lstat(strPath.c_str(), &status) == 0)
        return ::stat(strPath.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
               ::faccessat(AT_FDCWD, strPath.c_str(), W_OK, AT_EACCESS) == 0;
    for (fs::path directory = strPath; errno == ENOENT && directory.has_relative_path();) {
        directory = directory.parent_path();
        if (::stat(directory.c_str(), &status) == 0)
            return S_ISDIR(status.st_mode) &&
                   ::faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
    }
    return false;
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace vellux
