#include "fakes/ScarceMemory.h"

#include <cerrno>
#include <cstdlib>
#include <new>
#include <sys/syscall.h>
#include <unistd.h>

using namespace scarce_memory;

extern "C" int fallocate(int nFile, int nMode, off_t nOffset, off_t nBytes) {
    if (nDiskRefusal == 0)
        return static_cast<int>(::syscall(SYS_fallocate, nFile, nMode, nOffset, nBytes));
    errno = nDiskRefusal;
    return -1;
}

void* operator new(std::size_t nSize) {
    if (nSize > nLargest)
        nLargest = nSize;
    void* const pMemory = nPiecesLeft == 0 ? nullptr : std::malloc(nSize);
    if (pMemory == nullptr)
        throw std::bad_alloc();
    if (nPiecesLeft > 0)
        --nPiecesLeft;
    return pMemory;
}
void operator delete(void* pMemory) noexcept {
    std::free(pMemory);
}
void operator delete(void* pMemory, std::size_t) noexcept {
    std::free(pMemory);
}
