// Bytes in memory.
#pragma once

#include <cstdint>
#include <vector>

namespace vellux {

using ByteBuffer = std::vector<std::uint8_t>;

} // namespace vellux
