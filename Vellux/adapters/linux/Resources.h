// Whether the system has what the program needs to start.
#pragma once

namespace vellux {

/// What is missing, as a sentence for the user; null when 32 descriptors and 8 threads are available. With
/// fewer than some 10 descriptors the toolkit aborts, and without a thread it waits forever. Later shortages
/// are handled where they occur. Takes less than a millisecond; the threads that it tries have ended when it
/// returns.
const char* missingResource();

} // namespace vellux
