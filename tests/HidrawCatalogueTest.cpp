// Which devices are listed, and which notices the difference of two listings gives.

#include "adapters/hidraw/HidrawCatalogue.h"

#include <gtest/gtest.h>

#include <set>

using namespace vellux;

namespace {

using Entries = std::vector<HidrawEntry>;
using Names = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

// A light missed or taken by the usage of a report, of a later collection, or of an item read out of step.
TEST(HidrawListing, PrimaryUsageIsThatOfTheFirstCollection) {
    const struct {
        const char* strWhat;
        Bytes descriptor;
        std::uint16_t nUsage;
    } rows[] = {
        {"a keyboard", {0x05, 0x01, 0x09, 0x06, 0xA1, 0x01, 0x05, 0x07, 0x19, 0xE0, 0x29, 0xE7}, 6},
        {"a vendor page, usages inside, a second collection",
         {0x06, 0x00, 0xFF, 0x09, 0x03, 0xA1, 0x01, 0x09, 0x01, 0x91, 0x02, 0xC0, 0x09, 0x06, 0xA1, 0x01,
          0xC0},
         3},
        {"two bytes", {0x06, 0x00, 0xFF, 0x0A, 0xFF, 0xA0, 0xA1, 0x01}, 0xA0FF},
        {"four bytes: page and usage", {0x0B, 0x34, 0x12, 0x0C, 0x00, 0xA1, 0x01}, 0x1234},
        {"no byte", {0x08, 0xA1, 0x01}, 0},
        {"the first of several", {0x09, 0x03, 0x09, 0x04, 0xA1, 0x01}, 3},
        {"a collection without usage", {0x05, 0x01, 0xA1, 0x01, 0x09, 0x03, 0xA1, 0x00}, 0},
        {"a usage used up by a report before", {0x09, 0x05, 0x91, 0x02, 0xA1, 0x01}, 0},
        {"a long item full of what looks like items",
         {0xFE, 0x04, 0xF0, 0x09, 0x07, 0xA1, 0x01, 0x09, 0x03, 0xA1, 0x01},
         3},
        {"a report size that looks like a collection", {0x09, 0x03, 0x75, 0xA1, 0xA1, 0x01}, 3},
        {"empty", {}, 0},
        {"cut in an item", {0x09, 0x03, 0xA1}, 0},
        {"cut in a usage", {0x0B, 0x34, 0x12}, 0},
        {"cut in a long item's head", {0xFE}, 0},
        {"cut in a long item", {0xFE, 0xFF, 0x00, 0x09, 0x03}, 0},
    };
    for (const auto& row : rows)
        EXPECT_EQ(primaryUsage(row.descriptor), row.nUsage) << row.strWhat;
}

/// A reference that knows how it came about: "a/1" is path a opened, "a/1!" refused, the first time.
struct NamedDevice : HidDevice {
    explicit NamedDevice(std::string name) : strName(std::move(name)) {}
    const std::string strName;
};

/// One listing and what is to come of it; references as NamedDevice names them.
struct Step {
    const char* strWhat;
    Entries present;
    std::set<std::string> refused; // paths that don't open
    bool bRedeliver;
    Names removed, arrived, devices;
};

HidrawEntry light(const char* strPath, const char* strInstance) {
    return {strPath, strInstance, 0x1130, 1, 3};
}

class HidrawStepsFixture : public testing::Test {
protected:
    void run(const std::vector<Step>& steps) {
        for (const Step& step : steps) {
            const HidrawChanges changes = m_catalogue.update(
                step.present, [&](const HidrawEntry& entry) { return open(entry, step.refused); },
                step.bRedeliver);
            EXPECT_EQ(names(changes.removed), step.removed) << step.strWhat;
            EXPECT_EQ(names(changes.arrived), step.arrived) << step.strWhat;
            EXPECT_EQ(names(m_catalogue.devices()), step.devices) << step.strWhat;
        }
    }

private:
    HidrawOpened open(const HidrawEntry& entry, const std::set<std::string>& refused) {
        const bool bOpened = !refused.contains(entry.strPath);
        const std::string strTry = std::to_string(++m_tries[entry.strPath]);
        return {std::make_shared<NamedDevice>(entry.strPath + "/" + strTry + (bOpened ? "" : "!")), bOpened};
    }
    static Names names(const HidDeviceList& list) {
        Names result;
        for (const HidDeviceRef& device : list)
            result.push_back(dynamic_cast<const NamedDevice&>(*device).strName);
        return result;
    }

    HidrawCatalogue m_catalogue;
    std::map<std::string, int> m_tries;
};

// A light unplugged and plugged again between two listings keeps a dead handle.
TEST_F(HidrawStepsFixture, AnotherDeviceOnTheSamePathIsARemovalAndAnArrival) {
    HidrawEntry otherModel = light("a", "2");
    otherModel.nProductID = 2;
    run({
        {"first", {light("a", "1")}, {}, false, {}, {"a/1"}, {"a/1"}},
        {"replugged", {light("a", "2")}, {}, false, {"a/1"}, {"a/2"}, {"a/2"}},
        {"another model", {otherModel}, {}, false, {"a/2"}, {"a/3"}, {"a/3"}},
    });
}

// After a resume: a light left dark, told twice, or opened although its handle still works.
TEST_F(HidrawStepsFixture, RedeliveringTellsEachPresentLightOnce) {
    const auto a = light("a", "1");
    const auto b = light("b", "2");
    run({
        {"before", {a, b, light("c", "3")}, {"b"}, false, {}, {"a/1", "b/1!", "c/1"}, {"a/1", "b/1!", "c/1"}},
        {"resumed; one permitted now, one replugged, one new",
         {a, b, light("c", "4"), light("d", "5")},
         {},
         true,
         {"a/1", "b/1!", "c/1"},
         {"a/1", "b/2", "c/2", "d/1"},
         {"a/1", "b/2", "c/2", "d/1"}},
        {"still refused", {light("e", "6")}, {"e"}, true, {"a/1", "b/2", "c/2", "d/1"}, {"e/1!"}, {"e/1!"}},
        {"and told all the same", {light("e", "6")}, {"e"}, true, {"e/1!"}, {"e/1!"}, {"e/1!"}},
    });
}

} // namespace
