// Who may open a light. The guest has no logind; the file that says who sits at the first seat, which udevd's
// "uaccess" reads, is written here. Tag, rule order and access list are udevd's work.

#include "KernelFixture.h"
#include "ScreenReader.h"
#include "adapters/linux/UdevRuleCommand.h"

#include <algorithm>
#include <cstdio>
#include <fstream>

using namespace vellux::simulator;

namespace {

namespace fs = std::filesystem;

class PermissionsFixture : public KernelFixture {
protected:
    PermissionsFixture() {
        setRule(""); // none
        EXPECT_EQ(root("mkdir -p /run/systemd/seats && U=$(id -u nobody) && "
                       "printf 'ACTIVE=c1\\nACTIVE_UID=%s\\n' $U >/run/systemd/seats/seat0"),
                  0);
    }
    ~PermissionsFixture() override { root("rm -rf /etc/udev/rules.d/7?-vellux*.rules /run/systemd/seats"); }

    /// As the package does.
    static std::string installRules() {
        return std::string("cp ") + std::getenv("VELLUX_RULES") +
               " /etc/udev/rules.d/70-vellux.rules && udevadm control --reload && "
               "udevadm trigger --subsystem-match=hidraw";
    }
    static std::string remedy() { return vellux::udevRuleCommand(kV30Light.nVendorID, kV30Light.nProductID); }
    /// The products, as in the node's HID_ID, that the user may open. "nobody" sits at the seat.
    static std::vector<std::string> permitted(const std::string& strUser = "nobody") {
        std::vector<std::string> products;
        for (const auto& entry : fs::directory_iterator("/sys/class/hidraw")) {
            const std::string strNode = "/dev/" + entry.path().filename().string();
            if (root("setpriv --reuid=" + strUser + " --regid=nogroup --clear-groups sh -c 'exec 3<>" +
                     strNode + "' 2>/dev/null") != 0)
                continue;
            std::ifstream file(entry.path() / "device/uevent");
            for (std::string strLine; std::getline(file, strLine);)
                if (strLine.starts_with("HID_ID="))
                    products.push_back(strLine.substr(7));
        }
        std::sort(products.begin(), products.end());
        return products;
    }
};

// A window that leaves somebody alone with a light they may not open, nags about it, or doesn't notice the
// cure.
TEST_F(PermissionsFixture, TheWindowSaysWhatHelps) {
    const std::string strCommand = "text Command that lets you open the light " + remedy();
    const ScreenReader reader;
    UsbLight light(kV30Light);
    ASSERT_TRUE(waitUntil([] { return nodes() == 1; }));
    ASSERT_EQ(root("udevadm settle"), 0);
    startFollowing();
    ASSERT_TRUE(waitUntil([&] { return reader.shows("label Light found, but you may not open it."); }));
    ASSERT_TRUE(reader.shows(strCommand));
    waitInVain();
    EXPECT_EQ(reader.windows(), std::vector<std::string>{"Vellux"}); // no alert
    EXPECT_TRUE(light.attempts().empty());

    ASSERT_EQ(root("sudo() { \"$@\"; }; " + remedy()), 0);
    expectPromptly(light);
    ASSERT_TRUE(waitUntil([&] { return reader.shows("label Light found (8 colours, flashes by itself)."); }));
    EXPECT_FALSE(reader.shows(strCommand));
    EXPECT_EQ(reader.windows(), std::vector<std::string>{"Vellux"});
    endProgram();
}

// A rule that leaves a light out, or opens somebody's keyboard.
TEST_F(PermissionsFixture, TheRulesOpenTheLightsAlone) {
    ASSERT_EQ(root(installRules()), 0);
    std::vector<std::string> expected;
    std::vector<std::unique_ptr<UsbLight>> devices;
    for (const LightKind& kind : kLightKinds) {
        devices.push_back(std::make_unique<UsbLight>(kind));
        char text[32];
        std::snprintf(text, sizeof text, "0003:%08X:%08X", kind.nVendorID, kind.nProductID);
        expected.emplace_back(text);
    }
    std::sort(expected.begin(), expected.end());
    ASSERT_TRUE(waitUntil([&] { return nodes() == devices.size(); }));
    root("udevadm settle");
    EXPECT_EQ(permitted(), expected);
    EXPECT_EQ(permitted("daemon"), std::vector<std::string>()); // who does not sit there
    devices.clear();
    constexpr LightKind kOthers[] = {{0x1130, 0x0003, 3, LightModel::Framed},
                                     {0x2C0D, 0x0001, 1, LightModel::V30},
                                     {0x0E53, 0x0003, 1, LightModel::V30},
                                     {0x046D, 0x2516, 1, LightModel::V30}};
    for (const LightKind& kind : kOthers)
        devices.push_back(std::make_unique<UsbLight>(kind));
    ASSERT_TRUE(waitUntil([&] { return nodes() == devices.size(); }));
    root("udevadm settle");
    EXPECT_EQ(permitted(), std::vector<std::string>());
}

} // namespace
