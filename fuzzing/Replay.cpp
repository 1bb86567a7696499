// Feeds a target the files and directories of files that are its arguments: the corpus as a test, with any
// compiler and without a fuzzing engine. The exit status is 2 when there was no file.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize);

namespace fs = std::filesystem;

namespace {

int nFiles = 0;

void feed(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string strInput{std::istreambuf_iterator<char>(file), {}};
    std::fprintf(stderr, "%s\n", path.c_str()); // the last one is the one that fails
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(strInput.data()), strInput.size());
    ++nFiles;
}

} // namespace

int main(int nArguments, char** arguments) {
    for (int n = 1; n < nArguments; ++n) {
        if (fs::is_directory(arguments[n])) {
            for (const auto& entry : fs::directory_iterator(arguments[n]))
                feed(entry.path());
        } else {
            feed(arguments[n]);
        }
    }
    return nFiles > 0 ? 0 : 2;
}
