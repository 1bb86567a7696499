// The fixture of tests about the light: the started program, and the journal's lines for reports.
#pragma once

#include "fakes/ProgramFixture.h"
#include "support/Text.h"

/// The journal's lines of reports, in hexadecimal and parted by blanks: to framed and to plain lights by
/// their codes, to V30 lights by red, blue, green and control. "" for none.
inline Journal::Lines reportLines(const std::string& strTexts, const char* strHead, const char* strTail) {
    Journal::Lines lines;
    for (const std::string& strText : vellux::split(strTexts, " "))
        if (!strText.empty())
            lines.push_back("report " + (strHead + strText) + strTail);
    return lines;
}
inline Journal::Lines framed(const std::string& strCodes) {
    return reportLines(strCodes, "55534243004002", "");
}
inline Journal::Lines plain(const std::string& strCodes) {
    return reportLines(strCodes, "", "..00");
}
inline Journal::Lines v30(const std::string& strLevels) {
    return reportLines(strLevels, "", "0000ffff");
}

/// The program has started, with neither settings nor a light.
class LightFixture : public ProgramFixture {
protected:
    LightFixture() {
        delegate().applicationDidFinishLaunching();
        journal.clear();
    }

    /// The client has read this presence.
    void presence(const std::string& strAvailability, bool bOnCall) {
        scriptPresence(R"({"availability":")" + strAvailability + R"(","activity":")" +
                       (bOnCall ? "on-the-phone" : "in-a-meeting") + "\"}");
        client().httpGet_MyPresence("https://h/ucwa/me/presence", "A");
        journal.clear();
    }
    void arrive(const vellux::HidDeviceRef& device) {
        hid.simulateArrival(device);
        runPending();
    }
    void remove(const vellux::HidDeviceRef& device) {
        hid.simulateRemoval(device);
        runPending();
    }
    Lines reports() { return journal.take({"report"}); }
};
