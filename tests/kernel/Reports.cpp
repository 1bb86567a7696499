#include "Reports.h"

namespace {

Bytes framedReport(std::uint8_t byCode) {
    return {'U', 'S', 'B', 'C', 0x00, 0x40, 0x02, byCode};
}

Bytes plainReport(std::uint8_t byCode) {
    Bytes report(64, 0);
    report[0] = byCode;
    return report;
}

} // namespace

Bytes levelsReport(const Colour& colour, std::uint8_t byControl) {
    return {colour.byRed, colour.byBlue, colour.byGreen, byControl, 0, 0, 0xFF, 0xFF};
}

Bytes reportOf(LightModel model, int nColour) {
    const Colour& colour = kColours[nColour];
    switch (model) {
    case LightModel::Framed:
        return framedReport(colour.byFramedCode);
    case LightModel::Plain:
        return plainReport(colour.byPlainCode);
    case LightModel::V30:
        break;
    }
    return levelsReport(colour);
}

bool isOff(LightModel model, const Bytes& report) {
    if (model == LightModel::V30)
        return report.size() == 8 && (report[3] & kOffBit) != 0;
    return report == reportOf(model, kNone);
}
