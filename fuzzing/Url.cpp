// A text that may form a URL.

#include "FuzzWorld.h"

#include "support/Url.h"

#include <algorithm>

using fuzzing::require;
using vellux::isHttpUrl;

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    const std::string strText(fuzzing::textOf(pData, nSize));
    if (!isHttpUrl(strText))
        return 0;

    require(std::all_of(strText.begin(), strText.end(), [](char c) { return c > ' ' && c < '\x7F'; }),
            "a URL is visible ASCII");
    const std::string strScheme = vellux::toLower(strText.substr(0, strText.find(':')));
    require(strScheme == "http" || strScheme == "https", "a URL is one of two schemes");
    const std::string strRest = strText.substr(strText.find("://"));
    require(isHttpUrl("HTTP" + strRest) && isHttpUrl("https" + strRest), "the two schemes are alike");
    require(isHttpUrl(strText.substr(0, strText.find('#'))), "a fragment may be left out");
    require(!isHttpUrl("x" + strText), "the scheme stands at the head");

    // What no URL holds, at a place that the text itself chooses.
    std::size_t nPlace = 0;
    for (const char c : strText)
        nPlace = (nPlace * 31 + static_cast<unsigned char>(c)) % (strText.size() + 1);
    for (const char c : {'\0', ' ', '\r', '\n', '"', '<', '\\', '\x7F', '\x80', '\xFF'}) {
        std::string strBroken = strText;
        strBroken.insert(nPlace, 1, c);
        require(!isHttpUrl(strBroken), "a URL holds nothing that is not allowed");
    }
    return 0;
}
