// URLs as curl itself parses them, since it is curl that connects.
#pragma once

#include <curl/curl.h>

#include <memory>
#include <optional>
#include <string>

namespace vellux {

class CurlUrl {
public:
    /// `nFlags` are curl's, CURLU_...
    explicit CurlUrl(const std::string& strUrl, unsigned int nFlags = 0) : m_url(curl_url()) {
        if (m_url != nullptr && curl_url_set(m_url.get(), CURLUPART_URL, strUrl.c_str(), nFlags) != CURLUE_OK)
            m_url.reset();
    }

    /// Absent when the URL is malformed or has no such part.
    std::optional<std::string> part(CURLUPart which, unsigned int nFlags = 0) const {
        char* text = nullptr;
        if (m_url == nullptr || curl_url_get(m_url.get(), which, &text, nFlags) != CURLUE_OK)
            return std::nullopt;
        std::string strPart = text;
        curl_free(text);
        return strPart;
    }

private:
    struct FreeUrl {
        void operator()(CURLU* url) const { curl_url_cleanup(url); }
    };
    std::unique_ptr<CURLU, FreeUrl> m_url; // null for a malformed one
};

} // namespace vellux
