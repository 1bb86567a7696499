#include "fakes/KernelWrites.h"

#include <algorithm>
#include <cerrno>
#include <sys/types.h>

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
extern "C" ssize_t __real_write(int nFile, const void* pBytes, std::size_t nBytes);
extern "C" ssize_t __wrap_write(int nFile, const void* pBytes, std::size_t nBytes) {
    const int nError = kernel_writes::answer ? kernel_writes::answer() : 0;
    if (nError == 0)
        return __real_write(nFile, pBytes, std::min(nBytes, kernel_writes::nMost));
    errno = nError;
    return -1;
}
// NOLINTEND(bugprone-reserved-identifier)
