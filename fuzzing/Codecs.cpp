// Base64 and AES: bytes that are encoded, text that is decoded, under a key from the input's head.

#include "FuzzWorld.h"

#include "AES128Transform.h"
#include "MF_Base64Additions.h"

#include <algorithm>

using fuzzing::require;

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    const std::span<const std::uint8_t> input(pData, nSize);
    const vellux::ByteBuffer bytes(input.begin(), input.end());

    const auto strEncoded = base64String(input);
    require(strEncoded && strEncoded->size() == (nSize + 2) / 3 * 4, "three bytes make four characters");
    require(dataWithBase64String(*strEncoded) == bytes, "Base64 comes back");
    const auto decoded = dataWithBase64String(fuzzing::textOf(pData, nSize));
    require(decoded && decoded->size() <= nSize / 4 * 3 + 2, "four characters make three bytes at most");
    require(dataWithBase64String(*base64String(*decoded)) == decoded, "what was decoded comes back");
    const auto strText = stringFromBase64String(fuzzing::textOf(pData, nSize));
    require(!strText ||
                std::equal(strText->begin(), strText->end(), decoded->begin(), decoded->end(),
                           [](char c, std::uint8_t by) { return static_cast<std::uint8_t>(c) == by; }),
            "a text is the bytes that were decoded");

    const std::string strKey(fuzzing::textOf(pData, std::min<std::size_t>(nSize, 17)));
    const auto encrypted = AES128EncryptedDataWithKey(input, strKey);
    require(encrypted && encrypted->size() == 16 * (nSize / 16 + 1), "the padding fills a block");
    require(AES128DecryptedDataWithKey(*encrypted, strKey, strKey) == bytes,
            "AES comes back, and a vector changes nothing");
    const auto decrypted = AES128DecryptedDataWithKey(input, strKey);
    require(!decrypted || AES128EncryptedDataWithKey(*decrypted, strKey) == bytes,
            "what decrypts is what encrypting gives");
    return 0;
}
