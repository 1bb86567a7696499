#include "MF_Base64Additions.h"

#include "support/Text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>

namespace {

constexpr std::string_view encodingTable = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// How many "=" end the text, by input length modulo 3.
constexpr std::array<std::size_t, 3> paddingTable = {0, 2, 1};

constexpr std::uint8_t kOutsideAlphabet = 255;

constexpr std::array<std::uint8_t, 256> makeDecodingTable() {
    std::array<std::uint8_t, 256> table{};
    table.fill(kOutsideAlphabet);
    for (std::size_t n = 0; n < encodingTable.size(); ++n)
        table[static_cast<unsigned char>(encodingTable[n])] = static_cast<std::uint8_t>(n);
    table['='] = 0; // never asked, since pad characters are removed first; kept-on-purpose:pad-entry
    return table;
}

constexpr std::array<std::uint8_t, 256> decodingTable = makeDecodingTable();

char encoded(int nValue) {
    return encodingTable[static_cast<std::size_t>(nValue)];
}

std::uint8_t byteOf(int nValue) {
    return static_cast<std::uint8_t>(nValue & 0xFF);
}

} // namespace

std::optional<std::string> MF_Base64Codec::base64StringFromData(std::span<const std::uint8_t> data) {
    try {
        const std::size_t nLeft = data.size() % 3;
        std::string strText;
        strText.reserve((data.size() / 3 + (nLeft != 0 ? 1 : 0)) * 4);
        for (std::size_t n = 0; n < data.size(); n += 3) {
            const int b0 = data[n];
            const int b1 = n + 1 < data.size() ? data[n + 1] : 0;
            const int b2 = n + 2 < data.size() ? data[n + 2] : 0;
            strText += encoded(b0 >> 2);
            strText += encoded(((b0 & 0x03) << 4) | (b1 >> 4));
            strText += encoded(((b1 & 0x0F) << 2) | (b2 >> 6));
            strText += encoded(b2 & 0x3F);
        }
        const std::size_t nPadding = paddingTable[nLeft];
        strText.replace(strText.size() - nPadding, nPadding, nPadding, '=');
        return strText;
    } catch (const std::exception& error) {
        // kept-on-purpose:base-32
        std::fprintf(stderr, "WARNING: error occured while tring to encode base 32 data: %s\n", error.what());
        return std::nullopt;
    }
}

std::optional<vellux::ByteBuffer> MF_Base64Codec::dataFromBase64String(std::string_view strText) {
    try {
        std::string strRemaining(strText);
        std::erase(strRemaining, '=');
        if (std::any_of(strRemaining.begin(), strRemaining.end(), [](unsigned char by) { return by > 0x7F; }))
            strRemaining.clear(); // an empty buffer, not an absent one; kept-on-purpose:lenient-decoding

        vellux::ByteBuffer data;
        data.reserve((strRemaining.size() + 3) / 4 * 3);
        std::array<int, 4> values{};
        std::size_t nValues = 0;
        for (const char c : strRemaining) {
            const std::uint8_t byValue = decodingTable[static_cast<unsigned char>(c)];
            if (byValue == kOutsideAlphabet)
                continue;
            values[nValues++] = byValue;
            if (nValues < values.size())
                continue;
            data.push_back(byteOf((values[0] << 2) | (values[1] >> 4)));
            data.push_back(byteOf((values[1] << 4) | (values[2] >> 2)));
            data.push_back(byteOf((values[2] << 6) | values[3]));
            nValues = 0;
        }
        if (nValues >= 2)
            data.push_back(byteOf((values[0] << 2) | (values[1] >> 4)));
        if (nValues == 3)
            data.push_back(byteOf((values[1] << 4) | (values[2] >> 2)));
        return data;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "WARNING: error occured while decoding base 32 string: %s\n", error.what());
        return std::nullopt;
    }
}

std::optional<std::string> base64String(std::span<const std::uint8_t> data) {
    return MF_Base64Codec::base64StringFromData(data);
}

std::optional<vellux::ByteBuffer> dataWithBase64String(std::string_view strText) {
    return MF_Base64Codec::dataFromBase64String(strText);
}

std::optional<std::string> base64String(std::string_view strText) {
    return base64String(std::span(reinterpret_cast<const std::uint8_t*>(strText.data()), strText.size()));
}

std::optional<std::string> stringFromBase64String(std::string_view strText) {
    const std::optional<vellux::ByteBuffer> data = dataWithBase64String(strText);
    if (!data)
        return std::nullopt;
    std::string strResult(data->begin(), data->end());
    if (!vellux::isUtf8(strResult))
        return std::nullopt;
    return strResult;
}
