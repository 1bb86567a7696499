// Memory in the test's hands: linked into a test program, this replaces operator new and fallocate().
#pragma once

#include <atomic>
#include <cstddef>

namespace scarce_memory {

/// The largest piece that was asked for since the test set it to 0, in bytes.
inline std::atomic<std::size_t> nLargest = 0;
/// How many pieces are left before the next one is refused, and all that follow; negative: there is enough.
inline std::atomic<int> nPiecesLeft = -1;
/// errno of each reservation of room in a file; 0: as the file system says.
inline std::atomic<int> nDiskRefusal = 0;

} // namespace scarce_memory
