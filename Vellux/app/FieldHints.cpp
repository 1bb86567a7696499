#include "app/FieldHints.h"

namespace vellux {

namespace {

bool has(std::string_view strText, std::string_view strPart) {
    return strText.find(strPart) != std::string_view::npos;
}

// Also the blank that does not break a line (U+00A0), which comes with texts that are copied from pages.
bool hasBlank(std::string_view strText) {
    return strText.find_first_of(" \t\r\n\f\v") != std::string_view::npos || has(strText, "\xC2\xA0");
}

} // namespace

FieldHint serverHint(std::string_view strText) {
    const std::size_t nPath = strText.find_first_of("/\\?#");
    if (has(strText, "://"))
        return FieldHint::Scheme;
    if (has(strText.substr(0, nPath), "@"))
        return FieldHint::UserInformation;
    if (nPath != std::string_view::npos)
        return FieldHint::Path;
    if (hasBlank(strText))
        return FieldHint::Blank;
    return has(strText, ";") ? FieldHint::Semicolon : FieldHint::None;
}

FieldHint userHint(std::string_view strText) {
    if (has(strText, ";"))
        return FieldHint::Semicolon;
    const bool bDomain = strText.empty() || strText.find_first_of("\\@") != std::string_view::npos;
    return bDomain ? FieldHint::None : FieldHint::NoDomain;
}

FieldHint passwordHint(std::string_view strText) {
    return has(strText, ";") ? FieldHint::Semicolon : FieldHint::None;
}

} // namespace vellux
