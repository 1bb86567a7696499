// What the client reads out of the server's JSON answers. A member of the wrong type counts as absent.
#pragma once

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellux {

/// One event of a batch.
struct ChannelEvent {
    std::optional<std::string> strRel;  // "link" then "rel"
    std::optional<std::string> strType; // "type"
};

/// One entry of a batch's "sender": its events, absent when it has no such list.
struct ChannelSender {
    std::optional<std::vector<ChannelEvent>> events;
};

/// A parsed answer.
class JsonBody {
public:
    /// Names of members, from the top level down.
    using KeyPath = std::initializer_list<const char*>;

    /// Absent unless the body is one JSON object in UTF-8 with at most 1,000,000 values, nested at most
    /// 200,000 deep; also when memory runs out.
    [[nodiscard]] static std::optional<JsonBody> parse(std::string_view strBody);

    /// The string at the end of the path; absent when a member on the way is missing or the value isn't a
    /// string.
    std::optional<std::string> text(KeyPath path) const;

    /// The entries of "sender"; absent when there is no such list.
    std::optional<std::vector<ChannelSender>> senders() const;

private:
    struct Document;
    explicit JsonBody(std::shared_ptr<const Document> document);

    std::shared_ptr<const Document> m_document;
};

} // namespace vellux
