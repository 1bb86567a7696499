#include "model/ProgramStatus.h"

#include <algorithm>

namespace vellux {

namespace {

std::string field(std::string strText) {
    std::replace_if(
        strText.begin(), strText.end(),
        [](char character) {
            const auto byCharacter = static_cast<unsigned char>(character);
            return byCharacter < ' ' || byCharacter == 0x7F;
        },
        ' ');
    return strText.empty() ? "-" : strText;
}

} // namespace

std::string statusLine(const ProgramStatus& status) {
    return field(status.strState) + '\t' + field(status.strPresence) + '\t' +
           (status.bOnCall ? "call" : "no call") + '\t' + field(status.strLamp) + '\t' +
           field(status.strLight);
}

} // namespace vellux
