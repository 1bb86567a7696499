#include "platform/Console.h"

#include <algorithm>

namespace vellux::simulator {

void Console::print(std::string strLine) {
    std::replace_if(
        strLine.begin(), strLine.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    ScopedLock lock(m_mutex);
    std::fprintf(m_file, "%s\n", strLine.c_str());
    std::fflush(m_file);
}

} // namespace vellux::simulator
