#include "AES128Transform.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <new>

namespace {

constexpr std::size_t kBlockSize = 16;

// Room for 16 bytes of text and a terminating zero; the cipher takes the first 16.
using TextBuffer = std::array<std::uint8_t, kBlockSize + 1>;

TextBuffer paddedText(std::optional<std::string_view> text) {
    TextBuffer buffer{};
    if (text && text->size() < buffer.size())
        std::copy(text->begin(), text->end(), buffer.begin());
    return buffer;
}

struct FreeContext {
    void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};

} // namespace

std::optional<vellux::ByteBuffer> AES128Operation(AES128Direction operation,
                                                  std::span<const std::uint8_t> data,
                                                  std::optional<std::string_view> key,
                                                  std::optional<std::string_view> iv) try {
    constexpr auto kLongest = static_cast<std::size_t>(std::numeric_limits<int>::max()) - kBlockSize;
    if (data.size() > kLongest)
        return std::nullopt;

    const TextBuffer keyBuffer = paddedText(key);
    const TextBuffer ivBuffer = paddedText(iv);
    vellux::ByteBuffer output(data.size() + kBlockSize);
    int nUpdated = 0;
    int nFinished = 0;
    const std::unique_ptr<EVP_CIPHER_CTX, FreeContext> context(EVP_CIPHER_CTX_new());
    const bool bDone =
        context != nullptr &&
        EVP_CipherInit_ex(context.get(), EVP_aes_128_ecb(), nullptr, keyBuffer.data(), ivBuffer.data(),
                          operation == AES128Direction::Encrypt ? 1 : 0) == 1 &&
        EVP_CipherUpdate(context.get(), output.data(), &nUpdated, data.data(),
                         static_cast<int>(data.size())) == 1 &&
        EVP_CipherFinal_ex(context.get(), output.data() + nUpdated, &nFinished) == 1;
    if (!bDone)
        return std::nullopt;
    output.resize(static_cast<std::size_t>(nUpdated) + static_cast<std::size_t>(nFinished));
    return output;
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

std::optional<vellux::ByteBuffer> AES128EncryptedDataWithKey(std::span<const std::uint8_t> data,
                                                             std::optional<std::string_view> key) {
    return AES128EncryptedDataWithKey(data, key, std::nullopt);
}

std::optional<vellux::ByteBuffer> AES128EncryptedDataWithKey(std::span<const std::uint8_t> data,
                                                             std::optional<std::string_view> key,
                                                             std::optional<std::string_view> iv) {
    return AES128Operation(AES128Direction::Encrypt, data, key, iv);
}

std::optional<vellux::ByteBuffer> AES128DecryptedDataWithKey(std::span<const std::uint8_t> data,
                                                             std::optional<std::string_view> key) {
    return AES128DecryptedDataWithKey(data, key, std::nullopt);
}

std::optional<vellux::ByteBuffer> AES128DecryptedDataWithKey(std::span<const std::uint8_t> data,
                                                             std::optional<std::string_view> key,
                                                             std::optional<std::string_view> iv) {
    return AES128Operation(AES128Direction::Decrypt, data, key, iv);
}
