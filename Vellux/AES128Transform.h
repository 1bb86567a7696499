// AES-128 over whole byte buffers, under a key given as text. Plain functions without state; any thread.
#pragma once

#include "support/ByteBuffer.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

enum class AES128Direction : std::uint32_t { Encrypt = 0, Decrypt = 1 };

/// Transforms a buffer with AES-128 in ECB mode with PKCS#7 padding. The key's UTF-8 bytes are padded with
/// zero bytes to 16; an absent key is 16 zero bytes, and so is one that does not fit, which is longer than 16
/// bytes. An initialisation vector may be given, but ECB doesn't use it: it never changes the result, and the
/// credentials file depends on that (kept-on-purpose:ecb). Encrypting n bytes gives n rounded up to the next
/// multiple of 16, or n + 16 for a multiple; decrypting checks and removes the padding. Absent for a length
/// that is no multiple of 16, a bad padding, some 2 GiB or more, or when memory runs out.
[[nodiscard]] std::optional<vellux::ByteBuffer> AES128Operation(AES128Direction operation,
                                                                std::span<const std::uint8_t> data,
                                                                std::optional<std::string_view> key,
                                                                std::optional<std::string_view> iv);

/// AES128Operation by its two directions, with and without an initialisation vector.
[[nodiscard]] std::optional<vellux::ByteBuffer>
AES128EncryptedDataWithKey(std::span<const std::uint8_t> data, std::optional<std::string_view> key);
[[nodiscard]] std::optional<vellux::ByteBuffer>
AES128EncryptedDataWithKey(std::span<const std::uint8_t> data, std::optional<std::string_view> key,
                           std::optional<std::string_view> iv);
[[nodiscard]] std::optional<vellux::ByteBuffer>
AES128DecryptedDataWithKey(std::span<const std::uint8_t> data, std::optional<std::string_view> key);
[[nodiscard]] std::optional<vellux::ByteBuffer>
AES128DecryptedDataWithKey(std::span<const std::uint8_t> data, std::optional<std::string_view> key,
                           std::optional<std::string_view> iv);
