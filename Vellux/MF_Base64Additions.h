// The Base64 codec (RFC 4648, section 4) that the settings file is written with. Any thread.
#pragma once

#include "support/ByteBuffer.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

class MF_Base64Codec {
public:
    /// Standard alphabet, padded with "=", no line breaks; "" for an empty buffer. Absent, with a line on
    /// standard error, only when memory runs out.
    [[nodiscard]] static std::optional<std::string> base64StringFromData(std::span<const std::uint8_t> data);

    /// Decodes leniently: "=" is dropped wherever it stands, every other byte outside the alphabet is
    /// skipped, a lone last character is dropped. Text with any byte beyond ASCII decodes to an empty buffer.
    /// Absent, with a line on standard error, only when memory runs out.
    [[nodiscard]] static std::optional<vellux::ByteBuffer> dataFromBase64String(std::string_view strText);
};

/// The buffer as Base64 text.
[[nodiscard]] std::optional<std::string> base64String(std::span<const std::uint8_t> data);
/// A buffer made from Base64 text.
[[nodiscard]] std::optional<vellux::ByteBuffer> dataWithBase64String(std::string_view strText);
/// The text's UTF-8 bytes as Base64 text.
[[nodiscard]] std::optional<std::string> base64String(std::string_view strText);
/// A text made from the Base64 form of its UTF-8 bytes; absent when they are not UTF-8.
[[nodiscard]] std::optional<std::string> stringFromBase64String(std::string_view strText);
