#include "ports/Console.h"

#include <algorithm>
#include <utility>

namespace vellux::simulator {

void Console::print(std::string strLine) {
    std::replace_if(
        strLine.begin(), strLine.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    ScopedLock lock(m_mutex);
    if (m_file != nullptr) {
        std::fprintf(m_file, "%s\n", strLine.c_str());
        std::fflush(m_file);
    }
    if (m_bKeepLines)
        m_lines.push_back(std::move(strLine));
}

std::vector<std::string> Console::lines() const {
    ScopedLock lock(m_mutex);
    return m_lines;
}

} // namespace vellux::simulator
