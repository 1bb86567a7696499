// What the process may still have of the system.
#pragma once

namespace vellux {

/// What the program can't start without, as a sentence for the user; null when there is enough: 32
/// descriptors and 8 threads. Below some 10 descriptors the toolkit aborts, and for a thread that it can't
/// have it waits without end. What is missing later is another matter: whoever asks for it goes on without.
/// Takes less than a millisecond; the threads that it tries have ended when it returns.
const char* missingResource();

} // namespace vellux
