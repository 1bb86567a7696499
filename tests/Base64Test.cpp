// The Base64 codec: RFC 4648, leniency, and the log line of a failure. Codec and cipher when memory runs out.

#include "AES128Transform.h"
#include "MF_Base64Additions.h"
#include "fakes/ScarceMemory.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

std::string decoded(std::string_view text) {
    const auto data = dataWithBase64String(text);
    return data ? std::string(data->begin(), data->end()) : "(absent)";
}

// Wrong padding, groups or alphabet; absent for empty. Most are the vectors of RFC 4648, section 10.
TEST(Base64, Vectors) {
    const std::pair<std::string_view, const char*> rows[] = {{"", ""},
                                                             {"f", "Zg=="},
                                                             {"fo", "Zm8="},
                                                             {"foo", "Zm9v"},
                                                             {"foob", "Zm9vYg=="},
                                                             {"fooba", "Zm9vYmE="},
                                                             {"foobar", "Zm9vYmFy"},
                                                             {"\xFF\xFE\xFD", "//79"},
                                                             {"\xFB\xEF\xBE", "++++"}};
    for (const auto& [text, strEncoded] : rows) {
        EXPECT_EQ(base64String(text), strEncoded);
        EXPECT_EQ(decoded(strEncoded), text);
    }
    vellux::ByteBuffer data; // every byte at every place of a group
    for (int n = 0; n < 256 * 3 + 2; ++n) {
        data.push_back(static_cast<std::uint8_t>(n + n / 256));
        ASSERT_EQ(dataWithBase64String(base64String(data).value_or("")), data);
    }
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
