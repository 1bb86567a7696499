// What servers answer, what they should not, and what the program says to it.
#pragma once

#include "fakes/FakeHttpTransport.h"

inline const std::string kConnectionAlert = "alert Not able to connect to Lync server. Please check your "
                                            "network connection and check whether you have "
                                            "entered the correct server name on the Configure dialog.";

/// Hosts that make no URL: a blank, a line break, beyond ASCII, malformed ports, a stray percent sign.
inline const std::vector<std::string> kBadHosts = {"a b", "a\n", "l\xC3\xBDnc", "a:8x", "a:65536", "l%yn"};

/// No answer; neither answer nor error; the given answer with a transport error beside it.
inline std::vector<vellux::HttpResponse> brokenAnswers(const std::string& strBody) {
    return {FakeHttpTransport::failure(), {}, {strBody, vellux::HttpError{"connection reset"}}};
}

/// A batch of events, by default one presence event, whose "next" link is given.
inline std::string batch(const std::string& strNext,
                         const std::string& strEvents = R"({"link":{"rel":"presence"},"type":"updated"})") {
    return R"({"_links":{"next":{"href":")" + strNext + R"("}},"sender":[{"events":[)" + strEvents + "]}]}";
}

/// Bodies that are no JSON object: pages, halves, other values, no UTF-8, followed by a NUL, nested deeply.
inline std::vector<std::string> notObjects() {
    const std::string strDeep(100'000, '['), strClosed = strDeep + std::string(100'000, ']');
    std::string strObjects;
    for (int n = 0; n < 100'000; ++n)
        strObjects += R"({"_links":)";
    const std::string strNul = R"({"availability":"Busy"})" + std::string(1, '\0');
    return {"",          " ",         R"("text")",        "<html>",   "{",
            R"({"a":})", "{} {}",     "{\"a\":\"\xC3\"}", "[]",       "7",
            "null",      strDeep,     strClosed,          strObjects, "{\"a\":" + strDeep,
            strNul,      strNul + "}"};
}

/// Objects in which a member of the path is missing or of another kind, at each level in turn. `strRest`
/// follows the first member.
inline std::vector<std::string> wrongKinds(const std::vector<std::string>& path,
                                           const std::string& strRest = "") {
    std::vector<std::string> bodies = {R"({"other":"/a")" + strRest + "}"};
    for (std::size_t nLevel = 1; nLevel <= path.size(); ++nLevel)
        for (const char* strValue :
             {"7", "true", "null", "[]", "{}", R"(["/a"])", R"([{"href":"/a"}])", R"("/a")"}) {
            if (nLevel == path.size() && *strValue == '"')
                continue; // there a text is the right kind
            std::string strBody = strValue;
            for (std::size_t n = nLevel; n-- > 0;)
                strBody.insert(0, "{\"" + path[n] + "\":").append(n == 0 ? strRest + "}" : "}");
            bodies.push_back(strBody);
        }
    return bodies;
}

/// Bodies that are no JSON object, or in which a member of the path is missing or of another kind.
inline std::vector<std::string> badBodies(const std::vector<std::string>& path,
                                          const std::string& strRest = "") {
    std::vector<std::string> bodies = wrongKinds(path, strRest);
    for (const std::string& strBody : notObjects())
        bodies.push_back(strBody);
    return bodies;
}
