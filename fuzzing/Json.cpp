// A body that may be a JSON object.

#include "FuzzWorld.h"

#include "VelluxHttp/JsonBody.h"

namespace {

using fuzzing::require;

/// All that the client reads out of answers, in one text.
std::optional<std::string> readingOf(std::string_view strBody) {
    const auto answer = vellux::JsonBody::parse(strBody);
    if (!answer)
        return std::nullopt;
    std::string strReading;
    const auto add = [&strReading](const std::optional<std::string>& strText) {
        require(!strText || vellux::isUtf8(*strText), "a text is UTF-8");
        strReading += strText ? "=" + *strText : "-";
    };
    for (const char* strKey : {"token_type", "access_token", "error", "availability", "activity"})
        add(answer->text({strKey}));
    for (const char* strKey : {"self", "applications", "events", "next"})
        add(answer->text({"_links", strKey, "href"}));
    for (const char* strKey : {"makeMeAvailable", "presence"})
        add(answer->text({"_embedded", "me", "_links", strKey, "href"}));
    if (const auto senders = answer->senders()) {
        require(senders->size() <= strBody.size(), "an entry takes a byte");
        for (const vellux::ChannelSender& sender : *senders) {
            strReading += sender.events ? "[" : "-";
            for (const vellux::ChannelEvent& event :
                 sender.events.value_or(std::vector<vellux::ChannelEvent>())) {
                add(event.strRel);
                add(event.strType);
            }
        }
    }
    return strReading;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    const std::string strBody(fuzzing::textOf(pData, nSize));
    const auto strReading = readingOf(strBody);
    if (!strReading)
        return 0;

    require(vellux::isUtf8(strBody), "JSON is UTF-8");
    require(strBody.find('{') != std::string::npos && strBody[strBody.find_last_not_of(" \t\r\n")] == '}',
            "an object ends in its bracket");
    require(readingOf(strBody + " \r\n\t") == strReading, "blanks behind it change nothing");
    for (const char c : {'\0', '{', '}', 'x', ',', '\xFF'})
        require(!readingOf(strBody + c), "nothing else may stand behind it");
    require(!readingOf(strBody + '\0' + strBody), "a NUL ends nothing");
    require(!readingOf("[" + strBody + "]"), "a list is no object");
    return 0;
}
