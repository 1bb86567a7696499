#include "platform/PrivateDirectory.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace vellux::simulator {

std::unique_ptr<PrivateDirectory> PrivateDirectory::create() {
    std::error_code error;
    const fs::path parent = fs::absolute(fs::temp_directory_path(error), error);
    if (error)
        return nullptr;
    std::string strPath = (parent / "vellux-simulator-XXXXXX").string();
    if (::mkdtemp(strPath.data()) == nullptr)
        return nullptr;
    return std::unique_ptr<PrivateDirectory>(new PrivateDirectory(std::move(strPath)));
}

PrivateDirectory::~PrivateDirectory() {
    std::error_code error;
    fs::remove_all(m_strPath, error);
}

} // namespace vellux::simulator
