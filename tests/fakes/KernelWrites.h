// write() in the test's hands: linked with --wrap=write, the program's own code comes through here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace kernel_writes {

/// Asked before each write(): the errno that the kernel answers, or 0 to let it through. Set while nobody
/// writes.
inline std::function<int()> answer;
/// What one write() takes at most, in bytes.
inline std::size_t nMost = SIZE_MAX;

} // namespace kernel_writes
