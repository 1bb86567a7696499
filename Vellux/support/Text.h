// Plain operations on text. All text is UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vellux {

/// The pieces between the separators: always one more than there are separators, so "" gives one empty
/// piece. An empty separator separates nothing.
std::vector<std::string> split(std::string_view strText, std::string_view strSeparator);

/// The text with every occurrence of one text replaced by another; an empty one occurs nowhere.
std::string replaceAll(std::string_view strText, std::string_view strFind, std::string_view strReplacement);

/// A-Z turned into a-z, all other bytes as they are.
std::string toLower(std::string_view strText);

/// Whether the bytes are well-formed UTF-8 (RFC 3629: no surrogates, no overlong forms).
bool isUtf8(std::string_view bytes);

/// The decimal integer at the head of a text: leading white space skipped, an optional sign, digits up to
/// the first non-digit; 0 without digits. Beyond 64 bits it stays at the nearest end of the range.
std::int64_t integerValue(std::string_view strText);

} // namespace vellux
