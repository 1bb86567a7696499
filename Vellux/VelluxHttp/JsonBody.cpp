#include "VelluxHttp/JsonBody.h"

#include <nlohmann/json.hpp>

#include <new>
#include <utility>

namespace vellux {

using Json = nlohmann::json;

// Held by pointer and never copied: a copy would recurse as deeply as the answer nests.
// NOLINTNEXTLINE(bugprone-exception-escape): the library allocates while it destroys a deep document
struct JsonBody::Document {
    Json root;
};

namespace {

const Json* member(const Json* pValue, const char* strKey) {
    if (pValue == nullptr || !pValue->is_object())
        return nullptr;
    const auto found = pValue->find(strKey);
    return found == pValue->end() ? nullptr : &*found;
}

// Far beyond any real answer. The library spends some 80 bytes on each level and each value, so that 16 MiB
// of brackets would take more than a gigabyte.
constexpr std::size_t kDeepest = 200'000;
constexpr std::size_t kMostValues = 1'000'000;

bool wouldFillMemory(std::string_view strBody) {
    std::size_t nValues = 0;
    std::size_t nDepth = 0;
    bool bInText = false;
    for (std::size_t n = 0; n < strBody.size(); ++n) {
        const char c = strBody[n];
        if (bInText && c == '\\') {
            ++n; // whatever it escapes
        } else if (c == '"') {
            bInText = !bInText;
        } else if (!bInText) {
            const bool bOpens = c == '[' || c == '{';
            if (bOpens)
                ++nDepth;
            else if ((c == ']' || c == '}') && nDepth > 0)
                --nDepth;
            if (bOpens || c == ',')
                ++nValues;
            if (nDepth > kDeepest || nValues > kMostValues)
                return true;
        }
    }
    return false;
}

const Json* list(const Json* pValue) {
    return pValue != nullptr && pValue->is_array() ? pValue : nullptr;
}

std::optional<std::string> textAt(const Json* pValue, JsonBody::KeyPath path) {
    for (const char* strKey : path)
        pValue = member(pValue, strKey);
    if (pValue == nullptr || !pValue->is_string())
        return std::nullopt;
    return pValue->get_ref<const std::string&>();
}

} // namespace

JsonBody::JsonBody(std::shared_ptr<const Document> document) : m_document(std::move(document)) {}

std::optional<JsonBody> JsonBody::parse(std::string_view strBody) try {
    // The library takes a NUL for the end of the text.
    if (strBody.find('\0') != std::string_view::npos || wouldFillMemory(strBody))
        return std::nullopt;
    auto document = std::make_shared<Document>();
    document->root = Json::parse(strBody, nullptr, /*allow_exceptions=*/false);
    if (!document->root.is_object()) // a failed parse is "discarded", which is no object either
        return std::nullopt;
    return JsonBody(std::move(document));
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

std::optional<std::string> JsonBody::text(KeyPath path) const {
    return textAt(&m_document->root, path);
}

std::optional<std::vector<ChannelSender>> JsonBody::senders() const {
    const Json* const pSenders = list(member(&m_document->root, "sender"));
    if (pSenders == nullptr)
        return std::nullopt;
    std::vector<ChannelSender> senders;
    for (const Json& entry : *pSenders) {
        ChannelSender& sender = senders.emplace_back();
        const Json* const pEvents = list(member(&entry, "events"));
        if (pEvents == nullptr)
            continue;
        sender.events.emplace();
        for (const Json& event : *pEvents)
            sender.events->push_back({textAt(&event, {"link", "rel"}), textAt(&event, {"type"})});
    }
    return senders;
}

} // namespace vellux
