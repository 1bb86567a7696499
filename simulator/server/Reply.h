// An answer of the presence server, and how much of it goes out.
#pragma once

#include <string>
#include <utility>

namespace vellux::simulator {

/// Where a connection breaks.
enum class CutOff {
    Never,
    BeforeAnswer, ///< closed without a byte of an answer
    InBody,       ///< closed after the header fields and half of the body; without a body like BeforeAnswer
};

struct Reply {
    int nStatus = 200;
    /// Without a body when empty.
    std::string strBody;
    std::string strContentType = "application/json";
    CutOff cutOff = CutOff::Never;

    /// The reply that is none: the connection is closed.
    static Reply cut() {
        Reply reply;
        reply.cutOff = CutOff::BeforeAnswer;
        return reply;
    }
};

} // namespace vellux::simulator
