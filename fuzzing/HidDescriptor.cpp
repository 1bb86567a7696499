// A report descriptor as a device presents it.

#include "FuzzWorld.h"

#include "adapters/hidraw/HidrawCatalogue.h"

using fuzzing::require;

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    const std::vector<std::uint8_t> descriptor(pData, pData + nSize);
    const std::uint16_t nUsage = vellux::primaryUsage(descriptor);

    // The first collection decides: a shorter descriptor has it, or has none.
    for (std::size_t nCut = 0; nCut < nSize; nCut = nCut * 2 + 1) {
        const std::vector<std::uint8_t> cut(descriptor.begin(),
                                            descriptor.end() - static_cast<std::ptrdiff_t>(nCut));
        const std::uint16_t nOfCut = vellux::primaryUsage(cut);
        require(nOfCut == 0 || nOfCut == nUsage, "what is cut off does not count");
    }
    if (nUsage == 0)
        return 0;
    std::vector<std::uint8_t> longer = descriptor;
    longer.insert(longer.end(), descriptor.rbegin(), descriptor.rend());
    require(vellux::primaryUsage(longer) == nUsage, "what follows does not count");
    longer = {0xFE, 0x02, 0x00, 0x0A, 0xA0}; // a long item that holds a collection's beginning
    longer.insert(longer.end(), descriptor.begin(), descriptor.end());
    require(vellux::primaryUsage(longer) == nUsage, "a long item is skipped whole");
    return 0;
}
