// The AES-128 transform against vectors of FIPS-197 and of the openssl command line
// (openssl enc -aes-128-ecb -K KEY-IN-HEX).

#include "AES128Transform.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kKey = "k4mpr8vtxw2nbq6z";

vellux::ByteBuffer fromHex(std::string_view text) {
    vellux::ByteBuffer bytes;
    for (std::size_t n = 0; n < text.size(); n += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(std::string(text.substr(n, 2)), nullptr, 16)));
    return bytes;
}

// Another mode, key length or padding; a full block without its block of padding; a short or absent key not
// padded with zero bytes; an initialisation vector that matters, so that existing files can't be read any
// more.
TEST(AES128, Vectors) {
    struct Row {
        std::optional<std::string_view> key;
        std::string_view clear, encrypted; // hexadecimal
    };
    const Row rows[] = {{"\0\1\2\3\4\5\6\7\10\11\12\13\14\15\16\17"sv, "00112233445566778899aabbccddeeff",
                         "69c4e0d86a7b0430d8cdb78070b4c55a954f64f2e4e86e9eee82d20216684899"},
                        {kKey, "", "1731fdc8606b4b8ed1a19b2ed4ee6b5c"},
                        {kKey, "303132333435363738396162636465", "1653cd947dca2f6e2c8e909c55ad86a2"},
                        {kKey, "30313233343536373839616263646566",
                         "509ff7dd599296502d132c56a319ee0d1731fdc8606b4b8ed1a19b2ed4ee6b5c"},
                        {kKey, "3031323334353637383961626364656667",
                         "509ff7dd599296502d132c56a319ee0d29febce1820359de9a6d5a38827b68e8"},
                        {"short", "616263", "62744725fd20c07092636336ad2e4154"},
                        {"short\0\0\0\0\0\0\0\0\0\0\0"sv, "616263", "62744725fd20c07092636336ad2e4154"},
                        {std::nullopt, "616263", "976a995f94cf4c1e24b6e2fb067e7a69"}};
    for (const Row& row : rows) {
        const vellux::ByteBuffer clear = fromHex(row.clear), encrypted = fromHex(row.encrypted);
        EXPECT_EQ(AES128EncryptedDataWithKey(clear, row.key), encrypted) << row.clear;
        EXPECT_EQ(AES128EncryptedDataWithKey(clear, row.key, kKey), encrypted) << row.clear;
        EXPECT_EQ(AES128DecryptedDataWithKey(encrypted, row.key), clear) << row.clear;
        EXPECT_EQ(AES128DecryptedDataWithKey(encrypted, row.key, ""), clear) << row.clear;
    }
}

// Rubbish taken for credentials: wrong lengths, and blocks that end in 00, in 11 and in 0302.
TEST(AES128, RefusesBadPadding) {
    for (const std::size_t nLength : {0U, 1U, 15U, 17U, 31U})
        EXPECT_FALSE(AES128DecryptedDataWithKey(vellux::ByteBuffer(nLength, 0x5A), kKey)) << nLength;
    for (const char* strHex : {"f0c1f82bf021059add21f5cc0a852854", "c0840152a35d4729727612f9b5958ac5",
                               "214b6944506c2f029948de2471d9b690"})
        EXPECT_FALSE(AES128DecryptedDataWithKey(fromHex(strHex), kKey)) << strHex;
}

} // namespace
