// Where the simulation's effects are printed: one line each, whole and in their order.
#pragma once

#include "support/Mutex.h"

#include <cstdio>
#include <string>
#include <vector>

namespace vellux::simulator {

/// Any thread. Lines that threads print one after the other come out in that order, each flushed as it is
/// written.
class Console {
public:
    /// Prints to `file`, not owned; null: nowhere. With `bKeepLines` the lines can be read back, for programs
    /// that compare them.
    explicit Console(std::FILE* file, bool bKeepLines = false) : m_file(file), m_bKeepLines(bKeepLines) {}

    /// Prints one line, given without its line break; control characters in it come out as blanks.
    void print(std::string strLine);

    /// The lines so far, oldest first, when they are kept.
    std::vector<std::string> lines() const;

private:
    std::FILE* const m_file;
    const bool m_bKeepLines;
    mutable Mutex m_mutex;
    std::vector<std::string> m_lines VELLUX_GUARDED_BY(m_mutex);
};

} // namespace vellux::simulator
