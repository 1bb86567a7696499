// What other programs are told of the program.
#include "app/StatusFeed.h"

#include "fakes/ProgramFixture.h"
#include "fakes/ServerTexts.h"

namespace {

using vellux::ProgramStatus;
using Lines = Journal::Lines;

// A line that a script can't take apart, because the server sent what separates its fields.
TEST(ProgramStatus, IsOneLineOfFiveFields) {
    const struct {
        ProgramStatus status;
        const char* strLine;
    } rows[] = {
        {{}, "starting\t-\tno call\t-\t-"},
        {{"following", "Busy", true, "Red, flashing", "usable"},
         "following\tBusy\tcall\tRed, flashing\tusable"},
        {{"a\tb", "c\nd\r\x1b\x7f", false, "\xC3\xA4", "-"}, "a b\tc d   \tno call\t\xC3\xA4\t-"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(vellux::statusLine(row.status), row.strLine);
}

class StatusFeedFixture : public ProgramFixture {
protected:
    StatusFeedFixture() {
        delegate().applicationDidFinishLaunching();
        scriptServer(R"({"availability":"Online"})");
    }
    /// What has been told since, one line each.
    Lines told() {
        runPending();
        return std::exchange(m_told, {});
    }

    Lines m_told;
    vellux::Following m_following{mainThread, ui(), client()};
    vellux::StatusFeed m_feed{{mainThread, ui(), client(), m_following}, [this](const ProgramStatus& status) {
                                  std::string strLine = vellux::statusLine(status);
                                  std::replace(strLine.begin(), strLine.end(), '\t', '|');
                                  m_told.push_back(strLine);
                              }};
};

// A presence that is told though nobody knows it, a call that never ends, a change that is told twice or
// late.
TEST_F(StatusFeedFixture, TellsEachStateOnce) {
    minded = {"alert"};
    EXPECT_EQ(told(), Lines{"not connected|-|no call|Off|none"});
    const auto light = plugInV30();
    EXPECT_EQ(told(), Lines{"not connected|-|no call|Off|usable"});
    connect();
    runPending();
    ASSERT_FALSE(m_told.empty());
    EXPECT_EQ(m_told.back(), "following|Online|no call|Green|usable"); // past whatever turns the monitor met
    m_told.clear();
    const struct {
        const char *strPresence, *strTold;
    } rows[] = {
        {R"({"availability":"Busy"})", "following|Busy|no call|Red|usable"},
        {R"({"availability":"Busy","activity":"on-the-phone"})", "following|Busy|call|Red|usable"},
        {R"({"availability":"Busy","activity":"on-the-phone"})", ""},
        {R"({"availability":"Away"})", "following|Away|no call|Yellow|usable"},
    };
    for (const auto& row : rows) {
        scriptPresence(row.strPresence);
        FakeConnection& answered = transport.lastPoll();
        answered.simulateData(batch("/n"));
        answered.simulateEnd();
        EXPECT_EQ(told(), *row.strTold != 0 ? Lines{row.strTold} : Lines{});
    }
    transport.lastPoll().simulateFailure(vellux::HttpFailure::Refused);
    EXPECT_EQ(told(), Lines{"not reached|-|no call|Yellow|usable"});
    FakeConnection& last = transport.lastPoll();
    last.simulateData(batch("/n", R"({"link":{"rel":"note"},"type":"updated"})"));
    last.simulateEnd();
    EXPECT_EQ(told(), Lines{"ended|-|no call|Yellow|usable"});
    ui().setManualMode(*ui().buttonSelectManualMode());
    EXPECT_EQ(told(), Lines{"manual|-|no call|Red, flashing|usable"});
    hid.simulateRemoval(light);
    EXPECT_EQ(told(), Lines{"manual|-|no call|Red, flashing|none"});
    for (int n = 0; n < 1000; ++n)
        m_feed.ask();
    EXPECT_EQ(told(), Lines{});
}

} // namespace
