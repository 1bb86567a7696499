#include "adapters/curl/CurlExchange.h"

#include "adapters/curl/CurlUrl.h"

#include <algorithm>

namespace vellux {

namespace {

constexpr std::size_t kLongestWord = 100; // bytes of what a server says
constexpr std::size_t kMostSchemes = 10;
constexpr std::string_view kBlanks = " \t";

bool isLetterOrDigit(char letter) {
    return (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z') ||
           (letter >= '0' && letter <= '9');
}

// What RFC 9110 calls a token; '/' for media types.
std::string_view leadingWord(std::string_view strText) {
    const auto end = std::find_if_not(strText.begin(), strText.end(), [](char letter) {
        return isLetterOrDigit(letter) ||
               std::string_view("!#$%&'*+-.^_`|~/").find(letter) != std::string_view::npos;
    });
    return strText.substr(0, std::min(static_cast<std::size_t>(end - strText.begin()), kLongestWord));
}

std::string_view withoutBlanks(std::string_view strText) {
    strText.remove_prefix(std::min(strText.find_first_not_of(kBlanks), strText.size()));
    return strText;
}

// The text before the next comma that stands outside quotes; it and the comma leave `strRest`.
std::string_view takeElement(std::string_view& strRest) {
    bool bQuoted = false;
    std::size_t nEnd = 0;
    for (; nEnd < strRest.size() && (bQuoted || strRest[nEnd] != ','); ++nEnd)
        if (strRest[nEnd] == '"')
            bQuoted = !bQuoted;
        else if (bQuoted && strRest[nEnd] == '\\')
            ++nEnd;
    const std::string_view strElement = strRest.substr(0, nEnd);
    strRest.remove_prefix(std::min(nEnd + 1, strRest.size()));
    return strElement;
}

} // namespace

void setPlace(HttpExchange& exchange, const std::string& strUrl) {
    const CurlUrl url(strUrl);
    exchange.strHost = url.part(CURLUPART_HOST).value_or("");
    if (const auto strPort = url.part(CURLUPART_PORT, CURLU_NO_DEFAULT_PORT))
        exchange.strHost += ":" + *strPort;
    exchange.strPath = url.part(CURLUPART_PATH).value_or("");
}

void readAnswer(HttpExchange& exchange, CURL* easy) {
    long nStatus = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &nStatus);
    exchange.nStatus = static_cast<int>(nStatus);
    constexpr int kLastRequest = -1;
    curl_header* field = nullptr;
    if (curl_easy_header(easy, "Content-Type", 0, CURLH_HEADER, kLastRequest, &field) == CURLHE_OK)
        exchange.strContentType = leadingWord(withoutBlanks(field->value));
    for (std::size_t n = 0;
         curl_easy_header(easy, "WWW-Authenticate", n, CURLH_HEADER, kLastRequest, &field) == CURLHE_OK; ++n)
        for (std::string& strScheme : authenticationSchemes(field->value))
            if (exchange.authenticationSchemes.size() < kMostSchemes)
                exchange.authenticationSchemes.push_back(std::move(strScheme));
}

// Schemes and parameters are separated by the same commas; only a parameter's name has "=" behind it. What
// follows a scheme after a blank is its first parameter or its token.
std::vector<std::string> authenticationSchemes(std::string_view strValue) {
    std::vector<std::string> schemes;
    while (!strValue.empty()) {
        const std::string_view strElement = withoutBlanks(takeElement(strValue));
        const std::string_view strWord = leadingWord(strElement);
        const std::string_view strNext = withoutBlanks(strElement.substr(strWord.size()));
        if (!strWord.empty() && !strNext.starts_with('='))
            schemes.emplace_back(strWord);
    }
    return schemes;
}

} // namespace vellux
