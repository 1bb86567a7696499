// The fixture of tests about the light: the started program, and the journal's lines for reports.
#pragma once

#include "fakes/ProgramFixture.h"
#include "light/ReportDecoder.h"
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

/// What a light shows after a journal's line "report HEX"; any other line as it is.
inline std::string inWords(const std::string& strLine) {
    using namespace vellux::simulator;
    if (!strLine.starts_with("report "))
        return strLine;
    std::vector<std::uint8_t> payload;
    for (std::size_t nAt = 7; nAt + 1 < strLine.size() && strLine[nAt] != '.'; nAt += 2)
        payload.push_back(static_cast<std::uint8_t>(std::stoul(strLine.substr(nAt, 2), nullptr, 16)));
    if (strLine.ends_with("..00"))
        payload.resize(64);
    const LightModel model = payload.size() == 64                           ? LightModel::Plain
                             : strLine.starts_with("report 55534243004002") ? LightModel::Framed
                                                                            : LightModel::V30;
    const DecodedReport report = decodeReport(model, payload);
    return report.state ? report.state->text() : report.strFault;
}

/// All lines in words; one that comes N times in a row is "N x LINE".
inline std::string inWords(const Journal::Lines& lines) {
    std::string strAll;
    for (auto it = lines.begin(); it != lines.end();) {
        const std::string strWords = inWords(*it);
        const auto end =
            std::find_if(it, lines.end(), [&](const auto& str) { return inWords(str) != strWords; });
        const auto nTimes = std::distance(it, end);
        strAll +=
            (strAll.empty() ? "" : ", ") + (nTimes == 1 ? "" : std::to_string(nTimes) + " x ") + strWords;
        it = end;
    }
    return strAll;
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
