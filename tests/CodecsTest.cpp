// The two codecs that the credentials go through: Base64 and AES-128.

#include "AES128Transform.h"
#include "MF_Base64Additions.h"
#include "fakes/ScarceMemory.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kKey = "k4mpr8vtxw2nbq6z";

std::string decoded(std::string_view text) {
    const auto data = dataWithBase64String(text);
    return data ? std::string(data->begin(), data->end()) : "(absent)";
}

// Wrong padding, groups or alphabet; absent for empty. Most are the vectors of RFC 4648, section 10.
TEST(Base64, Vectors) {
    using Row = std::pair<std::string_view, const char*>;
    for (const auto& [text, strEncoded] :
         {Row{"", ""}, Row{"f", "Zg=="}, Row{"fo", "Zm8="}, Row{"foo", "Zm9v"}, Row{"foob", "Zm9vYg=="},
          Row{"fooba", "Zm9vYmE="}, Row{"foobar", "Zm9vYmFy"}, Row{"\xFF\xFE\xFD", "//79"},
          Row{"\xFB\xEF\xBE", "++++"}}) {
        EXPECT_EQ(base64String(text), strEncoded);
        EXPECT_EQ(decoded(strEncoded), text);
    }
    vellux::ByteBuffer data; // every byte at every place of a group
    for (int n = 0; n < 256 * 3 + 2; ++n)
        data.push_back(static_cast<std::uint8_t>(n + n / 256));
    EXPECT_EQ(dataWithBase64String(base64String(data).value_or("")), data);
}

// A decoder that refuses, stops at, or takes for values what it should skip; text that is no ASCII decoded.
TEST(Base64, DecodesLeniently) {
    for (const std::string_view text :
         {"Zm9v===="sv, "Z=m9v"sv, "=Zm9v"sv, "Zm9vY"sv, "Zm\r\n 9v\t"sv, "Z-m_9*v"sv, "Zm\0009v"sv})
        EXPECT_EQ(decoded(text), "foo") << text;
    for (const std::string_view text : {"Z"sv, "===="sv, "Zm9v\xC3\xA9"sv, "Zm9v\x80"sv, "Zm9v\xFF="sv})
        EXPECT_EQ(decoded(text), "") << text;
    EXPECT_EQ(decoded("Zm8"), "fo");
    EXPECT_EQ(decoded("Zh=="), "f");
}

// Bytes that are no text handed on as text; an empty text taken for none.
TEST(Base64, TextsAreUtf8) {
    EXPECT_EQ(base64String("gr\xC3\xBC\xC3\x9F"sv), "Z3LDvMOf");
    EXPECT_EQ(stringFromBase64String("Z3LDvMOf"), "gr\xC3\xBC\xC3\x9F");
    EXPECT_EQ(stringFromBase64String(""), "");
    EXPECT_EQ(stringFromBase64String("/w=="), std::nullopt); // 0xFF
    EXPECT_EQ(stringFromBase64String("7aCA"), std::nullopt); // a surrogate
}

// An exception that gets out, or a failure that leaves no line in the log. Nothing is read of an input whose
// length no memory can hold.
TEST(Base64, FailuresAreLogged) {
    const volatile std::size_t nAbsurd = 0x7000000000000000;
    const std::uint8_t by = 0;
    testing::internal::CaptureStderr();
    EXPECT_EQ(base64String(std::span<const std::uint8_t>(&by, nAbsurd)), std::nullopt);
    EXPECT_EQ(dataWithBase64String(std::string_view("Z", nAbsurd + nAbsurd)), std::nullopt);
    const std::string strLog = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(strLog.starts_with("WARNING: error occured while tring to encode base 32 data: ")) << strLog;
    EXPECT_NE(strLog.find("\nWARNING: error occured while decoding base 32 string: "), std::string::npos)
        << strLog;
}

// Another mode, key length or padding; a full block without its block of padding; a short or absent key not
// padded with zero bytes, or a long one used; an initialisation vector that matters, so that existing files
// can't be read any more. Vectors of FIPS-197, then of the openssl command line (openssl enc -aes-128-ecb
// -base64 -K KEY-IN-HEX).
TEST(AES128, Vectors) {
    const struct {
        std::optional<std::string_view> key;
        std::string_view clear;
        const char* strEncrypted;
    } rows[] = {{"\0\1\2\3\4\5\6\7\10\11\12\13\14\15\16\17"sv,
                 "\x00\x11\x22\x33\x44\x55\x66\x77\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF"sv,
                 "acTg2Gp7BDDYzbeAcLTFWpVPZPLk6G6e7oLSAhZoSJk="},
                {kKey, "", "FzH9yGBrS47RoZsu1O5rXA=="},
                {kKey, "0123456789abcde", "FlPNlH3KL24sjpCcVa2Gog=="},
                {kKey, "0123456789abcdef", "UJ/33VmSllAtEyxWoxnuDRcx/chga0uO0aGbLtTua1w="},
                {kKey, "0123456789abcdefg", "UJ/33VmSllAtEyxWoxnuDSn+vOGCA1nemm1aOIJ7aOg="},
                {"short", "abc", "YnRHJf0gwHCSY2M2rS5BVA=="},
                {"short\0\0\0\0\0\0\0\0\0\0\0"sv, "abc", "YnRHJf0gwHCSY2M2rS5BVA=="},
                {"seventeen letters", "abc", "l2qZX5TPTB4ktuL7Bn56aQ=="},
                {std::nullopt, "abc", "l2qZX5TPTB4ktuL7Bn56aQ=="}};
    for (const auto& row : rows) {
        const vellux::ByteBuffer clear(row.clear.begin(), row.clear.end()),
            encrypted = dataWithBase64String(row.strEncrypted).value();
        EXPECT_EQ(AES128EncryptedDataWithKey(clear, row.key, kKey), encrypted) << row.clear;
        EXPECT_EQ(AES128DecryptedDataWithKey(encrypted, row.key), clear) << row.clear;
        EXPECT_EQ(AES128DecryptedDataWithKey(encrypted, row.key, ""), clear) << row.clear;
    }
}

// Rubbish taken for credentials: wrong lengths, and blocks that end in 00, in 11 and in 0302.
TEST(AES128, RefusesBadPadding) {
    for (const std::size_t nLength : {0U, 1U, 15U, 17U, 31U})
        EXPECT_FALSE(AES128DecryptedDataWithKey(vellux::ByteBuffer(nLength, 0x5A), kKey)) << nLength;
    for (const char* strBlock :
         {"8MH4K/AhBZrdIfXMCoUoVA==", "wIQBUqNdRylydhL5tZWKxQ==", "IUtpRFBsLwKZSN4kcdm2kA=="})
        EXPECT_FALSE(AES128DecryptedDataWithKey(dataWithBase64String(strBlock).value(), kKey)) << strBlock;
}

// An exception where memory runs out, instead of a failure.
TEST(Memory, ThatRunsOutIsAFailure) {
    const std::vector<std::uint8_t> bytes(100, 'x');
    int nFailures = 0, nPieces = 0;
    for (bool bAll = false; !bAll; ++nPieces) {
        testing::internal::CaptureStderr();
        scarce_memory::nPiecesLeft = nPieces;
        const auto strText = base64String(bytes);
        const auto data = dataWithBase64String("Zm9v");
        const auto encrypted = AES128EncryptedDataWithKey(bytes, "key");
        scarce_memory::nPiecesLeft = -1;
        testing::internal::GetCapturedStderr();
        bAll = strText && data && encrypted;
        nFailures += bAll ? 0 : 1;
        ASSERT_LT(nPieces, 1000);
    }
    EXPECT_GE(nFailures, 3);
}

} // namespace
