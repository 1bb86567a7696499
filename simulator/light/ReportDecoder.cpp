#include "light/ReportDecoder.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace vellux::simulator {

namespace {

using Payload = std::span<const std::uint8_t>;

struct CodeRow {
    std::uint8_t byCode;
    const char* strColour;
};

// Framed lights: a cleared bit lights a lamp, 4 the red, 5 the green, 6 the blue one.
constexpr CodeRow kFramedCodes[] = {
    {0xEF, "Red"},  {0xDF, "Green"}, {0xCF, "Yellow"}, {0xAF, "Purple"},
    {0x9F, "Cyan"}, {0xBF, "Blue"},  {0x8F, "White"},  {0xFF, "None"},
};

constexpr CodeRow kPlainCodes[] = {
    {96, "Red"},  {216, "Green"}, {64, "Yellow"}, {32, "Purple"},
    {23, "Cyan"}, {53, "Blue"},   {7, "White"},   {115, "None"},
};

struct LevelRow {
    int nRed, nGreen, nBlue;
    const char* strColour;
};

constexpr LevelRow kLevels[] = {
    {255, 0, 0, "Red"},    {0, 150, 0, "Green"}, {255, 60, 0, "Yellow"},  {128, 0, 128, "Purple"},
    {0, 255, 255, "Cyan"}, {0, 0, 150, "Blue"},  {255, 125, 50, "White"}, {255, 15, 0, "Orange"},
};

struct SpeedRow {
    int nField;
    const char* strSpeed;
};

constexpr SpeedRow kSpeeds[] = {{0, "unset"}, {1, "slow"}, {2, "medium"}, {4, "fast"}};

DecodedReport fault(std::string strFault) {
    return {std::nullopt, std::move(strFault)};
}

template <typename... Values> std::string formatted(const char* strFormat, Values... values) {
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), strFormat, values...);
    return text.data();
}

DecodedReport wrongLength(Payload payload, unsigned nExpected) {
    return fault(formatted("length %u, not %u", static_cast<unsigned>(payload.size()), nExpected));
}

template <std::size_t N> DecodedReport decodeCode(const CodeRow (&rows)[N], std::uint8_t byCode) {
    for (const CodeRow& row : rows)
        if (row.byCode == byCode)
            return {LightState{row.strColour, ""}, ""};
    return fault(formatted("unknown code %02x", byCode));
}

DecodedReport decodeFramed(Payload payload) {
    constexpr std::array<std::uint8_t, 7> kFrame = {'U', 'S', 'B', 'C', 0, 64, 2};
    if (payload.size() != 8)
        return wrongLength(payload, 8);
    if (!std::equal(kFrame.begin(), kFrame.end(), payload.begin()))
        return fault("wrong frame");
    return decodeCode(kFramedCodes, payload[7]);
}

DecodedReport decodePlain(Payload payload) {
    if (payload.size() != 64)
        return wrongLength(payload, 64);
    if (std::any_of(payload.begin() + 1, payload.end(), [](std::uint8_t by) { return by != 0; }))
        return fault("bytes after the code");
    return decodeCode(kPlainCodes, payload[0]);
}

std::string colourOf(int nRed, int nGreen, int nBlue) {
    for (const LevelRow& row : kLevels)
        if (row.nRed == nRed && row.nGreen == nGreen && row.nBlue == nBlue)
            return row.strColour;
    return formatted("#%02x%02x%02x", static_cast<unsigned>(nRed), static_cast<unsigned>(nGreen),
                     static_cast<unsigned>(nBlue));
}

// Bytes: red, blue, green, control, two for music, two of 255. Control bits, from the lowest: off, dimming,
// flashing, three for the flash speed, two that mean nothing.
DecodedReport decodeV30(Payload payload) {
    if (payload.size() != 8)
        return wrongLength(payload, 8);
    if (payload[6] != 255 || payload[7] != 255)
        return fault("wrong tail");
    if (payload[4] != 0 || payload[5] != 0)
        return fault("music bits set");
    const unsigned nControl = payload[3];
    const bool bOff = (nControl & 1U) != 0;
    const bool bFlashing = (nControl >> 2 & 1U) != 0;
    const int nSpeed = static_cast<int>(nControl >> 3 & 7U);
    if ((nControl >> 1 & 1U) != 0)
        return fault("dimming bit set");
    if (nControl >> 6 != 0)
        return fault("unused control bits set");
    const auto* const pSpeed = std::find_if(std::begin(kSpeeds), std::end(kSpeeds),
                                            [nSpeed](const SpeedRow& row) { return row.nField == nSpeed; });
    if (pSpeed == std::end(kSpeeds))
        return fault(formatted("unknown flash speed %d", nSpeed));
    if (bOff)
        return {LightState{}, ""};
    return {LightState{colourOf(payload[0], payload[2], payload[1]), bFlashing ? pSpeed->strSpeed : ""}, ""};
}

} // namespace

std::string LightState::text() const {
    return strFlashing.empty() ? strColour : strColour + " flashing " + strFlashing;
}

DecodedReport decodeReport(LightModel model, std::span<const std::uint8_t> payload) {
    switch (model) {
    case LightModel::Framed:
        return decodeFramed(payload);
    case LightModel::Plain:
        return decodePlain(payload);
    case LightModel::V30:
        return decodeV30(payload);
    }
    return fault("no such light");
}

} // namespace vellux::simulator
