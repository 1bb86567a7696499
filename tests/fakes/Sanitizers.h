// The sanitizers' options for programs that a test starts.
#pragma once

#include <cstdlib>
#include <string>

/// For programs that end at once, as at a second signal, with threads still running: that is not a leak.
inline void expectThreadsAtTheEnd() {
    const char* const pOptions = std::getenv("TSAN_OPTIONS");
    ::setenv("TSAN_OPTIONS",
             (std::string(pOptions != nullptr ? pOptions : "") + ":report_thread_leaks=0").c_str(), 1);
}
