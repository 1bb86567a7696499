// Small files, read and written whole. Failures are values or nothing at all; nothing throws. Only regular
// files are read or written, so that nothing blocks on a pipe or a device.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vellux {

enum class FileAccess {
    Default,   ///< whatever the process's defaults give
    OwnerOnly, ///< created 0600; group and others lose what access a file gives them
};

/// Creates the directory with its parents, for its owner alone (0700), unless it exists. Failure is ignored.
void createPrivateDirectory(const std::string& strPath);

/// Creates an empty file unless something exists at the path. With OwnerOnly, an existing file loses access
/// for group and others. Failure is ignored.
void createFileIfMissing(const std::string& strPath, FileAccess access);

/// The whole of a regular file as UTF-8 text; absent when it can't be read, isn't UTF-8, or is larger than 1
/// MiB, far more than our files are.
[[nodiscard]] std::optional<std::string> readTextFile(const std::string& strPath);

/// Overwrites the file in place, creating it if need be (kept-on-purpose:written-in-place). Where there is no
/// room for the whole text, the file keeps what it held. Nothing is flushed to the disk. With OwnerOnly
/// nothing is written to somebody else's file that others can still reach; where modes can't be changed, the
/// user's own is written all the same. Failure is ignored.
void writeFile(const std::string& strPath, std::string_view strText, FileAccess access);

/// Whether this user could write the file, or create it together with the directories that are missing. Only
/// looks: changes nothing, and knows nothing of what room there is.
[[nodiscard]] bool isWritable(const std::string& strPath);

} // namespace vellux
