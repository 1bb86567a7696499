// What the sanitizers are told about programs that a test starts.
#pragma once

#include <cstdlib>
#include <string>

/// For programs that end at once, as at a second signal, and so leave their threads as they are: that is no
/// leak.
inline void expectThreadsAtTheEnd() {
    const char* const pOptions = std::getenv("TSAN_OPTIONS");
    ::setenv("TSAN_OPTIONS",
             (std::string(pOptions != nullptr ? pOptions : "") + ":report_thread_leaks=0").c_str(), 1);
}
