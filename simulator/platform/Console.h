// Where the simulation's effects are printed: one line each, whole and in their order.
#pragma once

#include "threads/Mutex.h"

#include <cstdio>
#include <string>

namespace vellux::simulator {

/// Any thread. Lines that threads print one after the other come out in that order, each flushed as it is
/// written.
class Console {
public:
    /// Prints to `file`, not owned.
    explicit Console(std::FILE* file) : m_file(file) {}

    /// Prints one line, given without its line break; control characters in it come out as blanks.
    void print(std::string strLine);

private:
    std::FILE* const m_file;
    Mutex m_mutex; // held while a line is written, so that lines stay whole
};

} // namespace vellux::simulator
