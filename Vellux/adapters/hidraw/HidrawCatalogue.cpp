#include "adapters/hidraw/HidrawCatalogue.h"

#include <algorithm>
#include <utility>

namespace vellux {

namespace {

constexpr struct {
    std::string_view strKey;
    std::uint16_t HidrawEntry::*pField;
} kProperties[] = {
    {"VendorID", &HidrawEntry::nVendorID},
    {"ProductID", &HidrawEntry::nProductID},
    {"PrimaryUsage", &HidrawEntry::nPrimaryUsage},
};

bool matches(const HidrawEntry& device, const HidMatching& wanted) {
    return std::all_of(wanted.begin(), wanted.end(), [&](const auto& property) {
        return hidrawProperty(device, property.first) == std::int64_t{property.second};
    });
}

} // namespace

std::optional<std::int64_t> hidrawProperty(const HidrawEntry& entry, std::string_view strKey) {
    for (const auto& property : kProperties) {
        if (property.strKey == strKey)
            return entry.*property.pField;
    }
    return std::nullopt;
}

std::uint16_t primaryUsage(std::span<const std::uint8_t> descriptor) {
    constexpr std::uint8_t kLongItem = 0xFE, kUsage = 0x08, kCollection = 0xA0; // the latter without a size
    constexpr std::uint8_t kMain = 0x00, kTypeBits = 0x0C, kSizeBits = 0x03;
    std::uint16_t nUsage = 0;
    bool bUsage = false; // the first of several counts
    while (!descriptor.empty()) {
        const std::uint8_t byPrefix = descriptor[0];
        const std::uint8_t byItem = byPrefix & static_cast<std::uint8_t>(~kSizeBits);
        std::size_t nHead = 1;
        std::size_t nData = byPrefix & kSizeBits;
        if (byPrefix == kLongItem && descriptor.size() > 1) {
            nHead = 3; // prefix, size, tag
            nData = descriptor[1];
        } else if (nData == 3) {
            nData = 4;
        }
        if (descriptor.size() < nHead + nData)
            return 0;
        if (byPrefix != kLongItem) {
            if (byItem == kCollection)
                return nUsage;
            if (byItem == kUsage && !bUsage) {
                bUsage = true;
                // The upper half of four bytes is a page.
                const unsigned nLow = nData > 0 ? descriptor[1] : 0U;
                const unsigned nHigh = nData > 1 ? descriptor[2] : 0U;
                nUsage = static_cast<std::uint16_t>(nLow | nHigh << 8);
            }
            if ((byItem & kTypeBits) == kMain) { // which uses them up
                nUsage = 0;
                bUsage = false;
            }
        }
        descriptor = descriptor.subspan(nHead + nData);
    }
    return 0;
}

std::vector<HidrawEntry> matchingDevices(std::vector<HidrawEntry> present,
                                         const std::vector<HidMatching>& matching) {
    std::erase_if(present, [&](const HidrawEntry& entry) {
        return std::none_of(matching.begin(), matching.end(),
                            [&](const HidMatching& wanted) { return matches(entry, wanted); });
    });
    return present;
}

HidrawChanges HidrawCatalogue::update(const std::vector<HidrawEntry>& present, const Open& open,
                                      bool bRedeliver) {
    HidrawChanges changes;
    std::vector<HidrawEntry> arriving = present;
    std::vector<Slot> staying;
    for (Slot& slot : m_slots) {
        const auto it = std::find(arriving.begin(), arriving.end(), slot.entry);
        if (it == arriving.end()) {
            changes.removed.push_back(std::move(slot.opened.device));
            continue;
        }
        arriving.erase(it);
        HidrawOpened now = slot.opened;
        if (!slot.opened.bOpened) {
            HidrawOpened again = open(slot.entry);
            if (again.bOpened)
                now = std::move(again);
        }
        if (bRedeliver || now.device != slot.opened.device) {
            changes.removed.push_back(slot.opened.device);
            changes.arrived.push_back(now.device);
        }
        staying.push_back({std::move(slot.entry), std::move(now)});
    }
    for (HidrawEntry& entry : arriving) {
        HidrawOpened opened = open(entry);
        changes.arrived.push_back(opened.device);
        staying.push_back({std::move(entry), std::move(opened)});
    }
    m_slots = std::move(staying);
    return changes;
}

HidDeviceList HidrawCatalogue::devices() const {
    HidDeviceList list;
    list.reserve(m_slots.size());
    for (const Slot& slot : m_slots)
        list.push_back(slot.opened.device);
    return list;
}

} // namespace vellux
