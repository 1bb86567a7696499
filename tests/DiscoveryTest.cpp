// Which devices are lights, and following them as they come and go.

#include "fakes/LightFixture.h"

namespace {

class DiscoveryFixture : public ProgramFixture {
protected:
    std::int32_t find(bool bExpected = true) {
        std::int32_t nCount = 77;
        EXPECT_EQ(VelluxFindDevices(nCount), bExpected);
        return nCount;
    }
    const std::shared_ptr<FakeHidDevice> light = FakeHidManager::light(0x1130, 1);
    const Lines setUp = {"hid create",           "hid matching", "hid register arrival",
                         "hid register removal", "hid schedule", "hid open"};
};

struct Identity {
    std::int32_t nVendor, nProduct, nThird; // usage, or type
};

// A wrong, missing or widened entry; another order of set-up; set-up repeated by the second discovery.
TEST_F(DiscoveryFixture, SetsTheManagerUpOnce) {
    EXPECT_EQ(find(), 0);
    EXPECT_EQ(journal.take(), setUp);
    const Identity rows[] = {{0x1130, 0x0001, 3}, {0x1130, 0x0002, 3}, {0x1130, 0x1E00, 1},
                             {0x0E53, 0x2516, 1}, {0x0E53, 0x2517, 1}, {0x0E53, 0x2519, 1},
                             {0x2C0D, 0x0003, 1}, {0x2C0D, 0x0006, 1}};
    std::vector<vellux::HidMatching> matching;
    for (const auto& [nVendor, nProduct, nUsage] : rows)
        matching.push_back({{"VendorID", nVendor}, {"ProductID", nProduct}, {"PrimaryUsage", nUsage}});
    EXPECT_EQ(hid.matching(), matching);
    hid.present(light);
    EXPECT_EQ(find(), 1);
    EXPECT_EQ(journal.take(), Lines{});
}

// A device of the wrong type; an unknown or unreadable one that wipes the type its position had before (9);
// writing past the type table, or listing no more than it holds.
TEST_F(DiscoveryFixture, ClassifiesByVendorAndProduct) {
    const Identity rows[] = {{0x1130, 1, 1},      {0x1130, 2, 1}, {0x1130, 0x1E00, 2}, {0x0E53, 0x2516, 3},
                             {0x2C0D, 1, 3},      {0x2C0D, 2, 4}, {0x0E53, 0x2517, 4}, {0x0E53, 0x2519, 7},
                             {0x2C0D, 3, 7},      {0x2C0D, 6, 6}, {0x1130, 3, 9},      {0x0E53, 0x2518, 9},
                             {0x2C0D, 0x2516, 9}, {0x0E53, 1, 9}, {0x2C0D, 4, 9},      {0, 0, 9}};
    hid.bMatches = false;
    for (const Identity& row : rows)
        hid.present(FakeHidManager::light(row.nVendor, row.nProduct));
    light->properties.erase("VendorID");
    for (int n = 16; n < 40; ++n)
        hid.present(light);
    for (auto& byType : asDeviceInfo)
        byType = 9;
    EXPECT_EQ(find(), 40);
    EXPECT_EQ(gnNumberOfVelluxDevices, 40);
    for (std::size_t n = 0; n < asDeviceInfo.size(); ++n)
        EXPECT_EQ(asDeviceInfo[n], n < 16 ? rows[n].nThird : 9) << "row " << n;
}

// A property read at the wrong width; a value written although nothing was read; a handle of another kind
// read as a device.
TEST_F(DiscoveryFixture, PropertiesAreSigned32BitIntegers) {
    struct Foreign : vellux::HidDevice {
        vellux::HidTypeID typeID() const override { return kTypeID + 1; }
    };
    const auto device = FakeHidManager::light(-2, 0x1'0000'0005);
    const auto read = [](const vellux::HidDeviceRef& handle, const char* strKey, std::int64_t nValue) {
        vellux::assertMainThread();
        IOHIDDevice_GetLongProperty(handle, strKey, nValue);
        return nValue;
    };
    EXPECT_EQ(read(device, "VendorID", 0), 0xFFFFFFFE);
    EXPECT_EQ(read(device, "ProductID", 0x7'0000'0000), 0x7'0000'0005);
    EXPECT_EQ(read(device, "Absent", 42), 42);
    EXPECT_EQ(read(nullptr, "VendorID", 42), 42);
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(read(std::make_shared<Foreign>(), "VendorID", 0),
                 "IOHIDDeviceGetTypeID \\(\\) == CFGetTypeID \\(pIOHIDDeviceRef\\)\\), "
                 "function IOHIDDevice_GetLongProperty, file VelluxControl, line 46");
}

// Success without a manager, or with one that did not open; a failed creation never tried again; a failed
// opening tried again; lights counted when the manager can't list them, or their list dropped with the count.
TEST_F(DiscoveryFixture, WithoutManagerOrSet) {
    hid.present(light);
    hid.bCreateFails = hid.bOpenFails = true;
    EXPECT_EQ(find(false), 0);
    EXPECT_EQ(journal.take(), Lines{"hid create"});
    hid.bCreateFails = false;
    EXPECT_EQ(find(false), 0);
    EXPECT_EQ(journal.take(), setUp);
    EXPECT_EQ(find(), 1); // it exists by now
    EXPECT_EQ(journal.take(), Lines{});
    hid.bNoSet = true;
    EXPECT_EQ(find(), 0);
    EXPECT_EQ(gnNumberOfVelluxDevices, 0);
    EXPECT_TRUE(gDeviceCFArrayRef.get() != nullptr && gDeviceCFArrayRef.get()->size() == 1);
}

// Notices or sends after release; the manager closed twice; types or the plugged flag reset with it.
TEST_F(DiscoveryFixture, Release) {
    hid.present(light);
    find();
    runPending();
    journal.clear();
    VelluxReleaseDevices();
    hid.noticeArrival(light);
    runPending();
    EXPECT_EQ(VelluxTurnOnRedLight(0), kIOReturnNoDevice);
    VelluxReleaseDevices();
    EXPECT_EQ(journal.take(),
              (Lines{"hid unregister arrival", "hid unregister removal", "hid unschedule", "hid close"}));
    EXPECT_TRUE(gnNumberOfVelluxDevices == 0 && gDeviceCFArrayRef.get() == nullptr);
    EXPECT_TRUE(bDevicePlugged && asDeviceInfo[0] == 1);
    EXPECT_EQ(find(), 1); // and all over again
    EXPECT_EQ(journal.take(), setUp);
}

// ---- Notices ----

using NoticesFixture = LightFixture;

// A report before the first notice; the colour asked for in the meantime lost; off not shown in between.
TEST_F(NoticesFixture, AColourAskedForWithoutALightIsShownOnArrival) {
    constexpr auto kNoDevice = static_cast<std::int32_t>(kIOReturnNoDevice);
    const auto device = FakeHidManager::light(0x2C0D, 6);
    hid.present(device);
    std::int32_t nCount = 0;
    VelluxFindDevices(nCount);
    for (const std::int32_t nColor : {9, -1, 5})
        EXPECT_EQ(ui().displayVelluxColor(nColor), kNoDevice);
    EXPECT_EQ(VelluxTurnOnRedLight(0), kIOReturnNoDevice);
    EXPECT_EQ(journal.take(), Lines{});
    hid.noticeArrival(device);
    runPending();
    EXPECT_EQ(inWords(reports()), "None, 3 x #000000, 2 x Blue");
    remove(device);
    EXPECT_EQ(ui().displayVelluxColor(2), kNoDevice);
    arrive(device);
    EXPECT_EQ(inWords(reports()), "None, Blue, #ff0096, #ff3c96, 2 x Yellow");
}

// A flag per light: it is one for all, and follows the last notice, not the count. A notice taken for what is
// there now: an arrival of what has gone, a removal of what is there again.
TEST_F(NoticesFixture, TellOfEarlierTimes) {
    const auto first = plugInFramed(), second = plugInPlain();
    remove(second);
    EXPECT_EQ(ui().displayVelluxColor(0), static_cast<std::int32_t>(kIOReturnNoDevice));
    EXPECT_EQ(journal.take(), Lines{});
    hid.noticeArrival(first);
    runPending();
    EXPECT_EQ(inWords(reports()), "None, Red");
    remove(first);
    hid.simulateArrival(first);
    hid.simulateRemoval(first); // both are still queued
    runPending();
    EXPECT_EQ(journal.take(), Lines{});
    hid.simulateArrival(first);
    hid.simulateRemoval(first);
    arrive(first);
    EXPECT_EQ(inWords(reports()), "None, Red, None, Red"); // on each arrival notice
}

// Reports of the old family to the new light; lists that lack "Orange", or offer what is not there; the
// refill before the mode is applied, or with a selection left.
TEST_F(NoticesFixture, ALightReplacedByAnotherFamily) {
    const Lines without = {"Red", "Green", "Yellow", "Purple", "Cyan", "Blue", "White", "None"};
    Lines with = without;
    with.insert(with.end() - 1, "Orange");
    EXPECT_EQ(ui().manualModeColorList()->items(), with);
    remove(plugInFramed());
    EXPECT_EQ(ui().syncModeColorList()->items(), without); // until the next arrival
    EXPECT_EQ(ui().manualModeColorList()->items(), without);
    ui().displayVelluxColor(0);
    observeControls(true);
    arrive(FakeHidManager::light(0x0E53, 0x2519));
    EXPECT_EQ(inWords(journal.lines({"report"})), "None, #000000, 4 x Red");
    EXPECT_EQ(ui().syncModeColorList()->items(), with);
    EXPECT_EQ(ui().manualModeColorList()->items(), with);
    EXPECT_EQ(ui().manualModeColorList()->indexOfSelectedItem(), -1);
    const Lines lines = journal.take();
    EXPECT_EQ(
        Lines(lines.end() - 5, lines.end()),
        (Lines{"syncModeFlashSpeedList selected 1", "syncModeColorList items 0",
               "manualModeColorList items 0", "syncModeColorList items 9", "manualModeColorList items 9"}));
}

} // namespace
