// Colours: the code or the levels of each for each family of lights.

#include "VelluxControl/VelluxControl.h"

using vellux::LightFamily;

namespace {

struct ColourRow {
    std::uint8_t byFramedCode;           // 0xFF with bit 4 cleared for red, 5 for green, 6 for blue
    std::uint8_t byPlainCode;            // arbitrary
    std::uint8_t byRed, byGreen, byBlue; // 0 to 255; not full scale: kept-on-purpose:levels-not-full-scale
};

constexpr ColourRow kRed = {0xEF, 0x60, 255, 0, 0};
constexpr ColourRow kGreen = {0xDF, 0xD8, 0, 150, 0};
constexpr ColourRow kBlue = {0xBF, 0x35, 0, 0, 150};
constexpr ColourRow kYellow = {0xCF, 0x40, 255, 60, 0};
constexpr ColourRow kMagenta = {0xAF, 0x20, 128, 0, 128};
constexpr ColourRow kCyan = {0x9F, 0x17, 0, 255, 255};
constexpr ColourRow kWhite = {0x8F, 0x07, 255, 125, 50};

constexpr std::uint8_t kFramedOffCode = 0xFF;
constexpr std::uint8_t kPlainOffCode = 0x73;

VelluxResult turnOn(std::uint8_t byDeviceIndex, const ColourRow& colour) {
    switch (vellux::familyAt(byDeviceIndex)) {
    case LightFamily::FramedCode:
        return HIDSendVelluxControlCode(byDeviceIndex, colour.byFramedCode);
    case LightFamily::PlainCode:
        return HIDSendVelluxControlCode(byDeviceIndex, colour.byPlainCode);
    case LightFamily::Levels:
        return TurnOnRGBLights(byDeviceIndex, colour.byRed, colour.byGreen, colour.byBlue);
    case LightFamily::None:
        break;
    }
    return kIOReturnSuccess;
}

} // namespace

// Four reports; the first shows the previous colour. (kept-on-purpose:previous-colour-first)
VelluxResult TurnOnRGBLights(std::uint8_t byDeviceIndex, std::uint8_t byRed, std::uint8_t byGreen,
                             std::uint8_t byBlue) {
    if (vellux::familyAt(byDeviceIndex) != LightFamily::Levels)
        return kIOReturnNoDevice;
    VelluxResult result = TurnOnV30Light(byDeviceIndex);
    if (result == kIOReturnSuccess)
        result = SetRedColorBrightnessLevel(byDeviceIndex, byRed);
    if (result == kIOReturnSuccess)
        result = SetGreenColorBrightnessLevel(byDeviceIndex, byGreen);
    if (result == kIOReturnSuccess)
        result = SetBlueColorBrightnessLevel(byDeviceIndex, byBlue);
    return result;
}

VelluxResult VelluxTurnOnRedLight(std::uint8_t byDeviceIndex) {
    return turnOn(byDeviceIndex, kRed);
}
VelluxResult VelluxTurnOnGreenLight(std::uint8_t byDeviceIndex) {
    return turnOn(byDeviceIndex, kGreen);
}
VelluxResult VelluxTurnOnBlueLight(std::uint8_t byDeviceIndex) {
    return turnOn(byDeviceIndex, kBlue);
}
VelluxResult VelluxTurnOnYellowLight(std::uint8_t byDeviceIndex) {
    return turnOn(byDeviceIndex, kYellow);
}
VelluxResult VelluxTurnOnMagentaLight(std::uint8_t byDeviceIndex) {
    return turnOn(byDeviceIndex, kMagenta);
}
VelluxResult VelluxTurnOnCyanLight(std::uint8_t byDeviceIndex) {
    return turnOn(byDeviceIndex, kCyan);
}
VelluxResult VelluxTurnOnWhiteLight(std::uint8_t byDeviceIndex) {
    return turnOn(byDeviceIndex, kWhite);
}

// The one colour that is refused, with kIOReturnNoDevice, by all but V30 lights.
// (kept-on-purpose:orange-refused)
VelluxResult VelluxTurnOnOrangeLight(std::uint8_t byDeviceIndex) {
    return TurnOnRGBLights(byDeviceIndex, 255, 15, 0);
}

VelluxResult VelluxTurnOffLight(std::uint8_t byDeviceIndex) {
    switch (vellux::familyAt(byDeviceIndex)) {
    case LightFamily::FramedCode:
        return HIDSendVelluxControlCode(byDeviceIndex, kFramedOffCode);
    case LightFamily::PlainCode: // twice, and the second result counts; kept-on-purpose:plain-off-twice
        HIDSendVelluxControlCode(byDeviceIndex, kPlainOffCode);
        return HIDSendVelluxControlCode(byDeviceIndex, kPlainOffCode);
    case LightFamily::Levels:
        return TurnOffV30Light(byDeviceIndex);
    case LightFamily::None:
        break;
    }
    return kIOReturnSuccess;
}
