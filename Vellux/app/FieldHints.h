// What looks wrong in the three fields of the sign-in, before anybody has pressed Connect.
#pragma once

#include <string_view>

namespace vellux {

enum class FieldHint {
    None,
    Scheme,          ///< the server name begins with one, as in "https://lync.example"
    UserInformation, ///< the server name has a user or a password before an "@"
    Path,            ///< the server name goes on with a path, a query or a fragment
    Blank,           ///< the server name has a blank in it, or at an end
    Semicolon,       ///< in any of the three: the credentials would not be read back
    NoDomain,        ///< the user name has neither "\" nor "@"
};

// The hint for a field's text, UTF-8; None for a field that is empty. Where several apply, the first of the
// list above. Nothing depends on it: Connect sends what was typed. Any thread.
[[nodiscard]] FieldHint serverHint(std::string_view strText);
[[nodiscard]] FieldHint userHint(std::string_view strText);
[[nodiscard]] FieldHint passwordHint(std::string_view strText);

} // namespace vellux
