#include "kernel/LightKind.h"

namespace vellux::simulator {

Bytes reportDescriptor(const LightKind& kind) {
    const std::uint8_t byLength = kind.model == LightModel::Plain ? 64 : 8;
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

} // namespace vellux::simulator
