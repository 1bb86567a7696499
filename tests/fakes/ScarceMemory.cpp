#include "fakes/ScarceMemory.h"

#include <cstdlib>
#include <new>

using namespace scarce_memory;

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
