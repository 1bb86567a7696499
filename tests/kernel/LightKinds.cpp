#include "LightKinds.h"

#include <cstdio>

Bytes framedReport(std::uint8_t byCode) {
    return {'U', 'S', 'B', 'C', 0x00, 0x40, 0x02, byCode};
}

Bytes plainReport(std::uint8_t byCode) {
    Bytes report(64, 0);
    report[0] = byCode;
    return report;
}

Bytes levelsReport(const Colour& colour, std::uint8_t byControl) {
    return {colour.byRed, colour.byBlue, colour.byGreen, byControl, 0, 0, 0xFF, 0xFF};
}

Bytes reportOf(Family family, int nColour) {
    const Colour& colour = kColours[nColour];
    switch (family) {
    case Family::Framed:
        return framedReport(colour.byFramedCode);
    case Family::Plain:
        return plainReport(colour.byPlainCode);
    case Family::Levels:
        break;
    }
    return levelsReport(colour);
}

bool isOff(Family family, const Bytes& report) {
    if (family == Family::Levels)
        return report.size() == 8 && (report[3] & kOffBit) != 0;
    return report == reportOf(family, kNone);
}

Bytes reportDescriptor(const LightKind& kind) {
    const std::uint8_t byLength = kind.family == Family::Plain ? 64 : 8;
    const auto collection = [byLength](std::uint8_t byUsage) {
        return Bytes{
            0x06, 0x00,     0xFF,                   // usage page, vendor defined
            0x09, byUsage,                          // usage
            0xA1, 0x01,                             // collection, application
            0x15, 0x00,     0x26, 0xFF, 0x00,       // values 0 to 255
            0x75, 0x08,                             // of 8 bits
            0x95, byLength, 0x09, 0x01, 0x91, 0x02, // so many out
            0x95, 0x08,     0x09, 0x02, 0x81, 0x02, // 8 in
            0xC0,
        };
    };
    Bytes descriptor = collection(kind.byPrimaryUsage);
    if (kind.bySecondUsage != 0) {
        const Bytes second = collection(kind.bySecondUsage);
        descriptor.insert(descriptor.end(), second.begin(), second.end());
    }
    return descriptor;
}

std::string text(const Bytes& report) {
    std::string strText;
    for (const std::uint8_t by : report) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02x ", by);
        strText += digits;
    }
    return strText;
}
