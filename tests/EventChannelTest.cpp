// The presence query and the event channel.
#include "fakes/ProgramFixture.h"
#include "fakes/ServerTexts.h"

namespace {

using Text = std::optional<std::string>;
using vellux::HttpResponse;
using Lines = Journal::Lines;

const std::string kP = R"({"link":{"rel":"presence"},"type":"updated"})"; // a presence event
const std::string kAsk =
    "request GET https://lync.example/ucwa/me/presence | Authorization: Bearer T0k3n | 30 s";
std::string poll(const std::string& strPath) {
    return "poll GET https://lync.example" + strPath + " | Authorization: Bearer T0k3n | 15 s";
}
/// What a number of presence events bring about, one after the other, each with the light before the next
/// poll.
Lines heard(int nEvents) {
    Lines lines;
    while (nEvents-- > 0)
        lines.insert(lines.end(), {kAsk, "report 55534243004002ef", "status Busy", poll("/n")});
    return lines;
}

/// A signed-in program with a light, in sync mode, its channel open.
class EventChannelFixture : public ProgramFixture {
protected:
    EventChannelFixture() {
        delegate().applicationDidFinishLaunching();
        plugInFramed();
        scriptServer(R"({"availability":"Busy","activity":"on-the-phone"})");
        client().httpPost_GetOAuthToken("lync.example", "u", "p");
        client().httpPost_SetupApplicationsAndGetPresenceURL("lync.example",
                                                             "https://lync.example/ucwa/applications", "t");
        observeControls();
        journal.clear();
        client().httpGet_EventChannels();
    }
    /// What a piece of data, or a failure, brings about on the poll opened last.
    Lines deliver(const std::string& strData) {
        journal.clear();
        transport.lastPoll().simulateData(strData);
        return journal.take();
    }
    /// The same, and the answer is complete.
    Lines answer(const std::string& strData) {
        FakeConnection& answered = transport.lastPoll();
        Lines lines = deliver(strData);
        answered.simulateEnd();
        return lines;
    }
    Lines fail() {
        journal.clear();
        transport.lastPoll().simulateResponse();
        transport.lastPoll().simulateFailure();
        return journal.take();
    }
};

// An answer that takes a gigabyte to read, or one that is refused only because a text in it is long and odd.
TEST_F(EventChannelFixture, AnswersMayBeLongButNotCostly) {
    std::string strText = R"({"availability":"Away","note":")",
                strList = R"({"availability":"Busy","list":[0)";
    for (int n = 0; n < 1'100'000; ++n) {
        strText += R"([,{\")";
        strList += ",0";
    }
    scriptPresence(strText + "\"}");
    EXPECT_EQ(client().httpGet_MyPresence("https://lync.example/ucwa/me/presence", "t"), "Away");
    scriptPresence(strList + "]}");
    EXPECT_EQ(client().httpGet_MyPresence("https://lync.example/ucwa/me/presence", "t"), std::nullopt);
    EXPECT_EQ(client().getPresenceStatus(), "Away");
    EXPECT_EQ(journal.take({"request", "alert"}).size(), 2U);
}

// A presence passed on altered, or a failed query that forgets the call the user is on.
TEST_F(EventChannelFixture, PresenceQueryKeepsItsStateUnlessAnAnswerCame) {
    const auto check = [&](const HttpResponse& answer, const Text& strResult, const Text& strStatus,
                           bool bOnCall) {
        SCOPED_TRACE(answer.strBody.value_or("no body").substr(0, 80));
        const std::string strUrl = "https://lync.example/ucwa/me/presence";
        transport.script("/ucwa/me/presence",
                         {{R"({"availability":"Away","activity":"on-the-phone"})", {}}, answer});
        client().httpGet_MyPresence(strUrl, "A b");
        journal.clear();
        EXPECT_EQ(client().httpGet_MyPresence(strUrl, "A b"), strResult);
        EXPECT_EQ(journal.take(), Lines{"request GET " + strUrl + " | Authorization: A b | 30 s"});
        EXPECT_EQ(client().getPresenceStatus(), strStatus);
        EXPECT_EQ(client().IsUserOnCall(), bOnCall);
    };
    for (const char* strActivity :
         {R"("In a meeting")", R"("On-The-Phone")", R"("on-the-phone ")", R"(["on-the-phone"])"})
        check({R"({"availability":"Busy","activity":)" + std::string(strActivity) + "}", {}}, "Busy", "Busy",
              false);
    check({R"({"availability":"","activity":"on-the-phone"})", {}}, "", "", true);
    check({R"({"availability":"BeRightBack"})", {}}, "BeRightBack", "BeRightBack", false);
    check({R"({"activity":"on-the-phone"})", {}}, {}, {}, true);
    for (const HttpResponse& answer : brokenAnswers(R"({"availability":"Busy"})"))
        check(answer, {}, "Away", true);
    for (const std::string& strBody : notObjects())
        check({strBody, {}}, {}, "Away", true);
    for (const std::string& strBody : wrongKinds({"availability"}))
        check({strBody, {}}, {}, {}, false);
    for (const std::string& strHost : kBadHosts)
        EXPECT_EQ(client().httpGet_MyPresence("https://" + strHost + "/p", "A b"), std::nullopt);
    EXPECT_EQ(client().httpGet_MyPresence({}, "A b"), std::nullopt);
    EXPECT_EQ(client().httpGet_MyPresence("https://lync.example/p", {}), std::nullopt);
    EXPECT_EQ(journal.take(), Lines{});
}

// Each event's order of effects; a batch that stops too early or too late, or opens polls nobody needs.
TEST_F(EventChannelFixture, BatchesHaveTheirEffectsUpToTheFirstGap) {
    EXPECT_EQ(journal.lines(), Lines{poll("/ucwa/events?ack=1")});
    const auto event = [](const std::string& strRel, const std::string& strType) {
        return R"({"link":{"rel":")" + strRel + R"("},"type":")" + strType + R"("})";
    };
    EXPECT_EQ(answer(batch("/n", kP + "," + kP)), heard(2));
    EXPECT_EQ(answer(batch("/n", event("mypresence2", "added") + "," + event("presence", "was updated"))),
              heard(2));
    EXPECT_EQ(answer(batch("/n", event("note", "updated") + "," + event("presence", "deleted") + "," + kP)),
              heard(1));
    EXPECT_EQ(answer(batch("/n", event("Presence", "added") + "," + event("presence", "Added"))), Lines{});
    EXPECT_EQ(answer(batch("/n", "")), Lines{});
    EXPECT_EQ(answer(batch("", kP)), Lines{});
    // Whatever is missing or of another kind ends the batch; what came before it has had its effect.
    const std::string strNext = R"({"_links":{"next":{"href":"/n"}},"sender":)",
                      strEntry = R"({"events":[)" + kP + "]}";
    EXPECT_EQ(answer(strNext + "[" + strEntry + R"(,{"events":[]},)" + strEntry + "]}"), heard(2));
    for (const std::string strGap :
         {"7", "null", "[]", "{}", R"("events")", R"({"events":{}})", R"({"events":"presence"})"})
        EXPECT_EQ(answer(strNext + "[" + strEntry + "," + strGap + "," + strEntry + "]}"), heard(1))
            << strGap;
    for (const std::string& strGap : wrongKinds({"link", "rel"}, R"(,"type":"added")"))
        EXPECT_EQ(answer(batch("/n", kP + "," + strGap + "," + kP)), heard(1)) << strGap;
    for (const std::string& strGap : wrongKinds({"type"}, R"(,"link":{"rel":"note"})"))
        EXPECT_EQ(answer(batch("/n", kP + "," + strGap + "," + kP)), heard(1)) << strGap;
    for (const std::string strSender :
         {"[]", "7", "null", "{}", R"({"events":[]})", R"("presence")", "[null]", "[7]", "[[]]"})
        EXPECT_EQ(answer(strNext + strSender + "}"), Lines{}) << strSender;
    for (const std::string& strData :
         badBodies({"_links", "next", "href"}, R"(,"sender":[)" + strEntry + "]"))
        EXPECT_EQ(answer(strData), Lines{}) << strData.substr(0, 80);
    EXPECT_EQ(answer(R"({"_links":{"next":{"href":"/n"}}})"), Lines{});
    EXPECT_EQ(answer(R"({"code":"Gone","message":"presence added"})"), Lines{});
    EXPECT_EQ(answer(batch("/n").substr(0, 40)), Lines{}); // pieces are not put together
    EXPECT_EQ(answer(batch("/n").substr(40)), Lines{});
    EXPECT_EQ(answer(batch("/a b")).back(), "status Busy"); // makes no URL: no poll
    client().httpGet_EventChannels();
    EXPECT_EQ(journal.take(), Lines{});
}

// A light set by an answer that never came, or a channel that goes on in spite of it.
TEST_F(EventChannelFixture, FailedRequeryEndsTheBatch) {
    std::vector<HttpResponse> answers = brokenAnswers(R"({"availability":"Busy"})");
    answers.insert(answers.end(), {{"<html>", {}}, {"{}", {}}, {R"({"availability":null})", {}}});
    Lines expected = heard(1);
    expected.push_back(kAsk);
    for (const HttpResponse& bad : answers) {
        const HttpResponse good{R"({"availability":"Busy"})", {}};
        transport.script("/ucwa/me/presence", {good, bad, good});
        EXPECT_EQ(deliver(batch("/n", kP + "," + kP + "," + kP)), expected);
    }
}

// A quiet hour that ends the channel, a retry without pause, one that skips a batch, or none for a poll that
// has been replaced meanwhile.
TEST_F(EventChannelFixture, FailureWaitsAndAsksAgain) {
    for (int n = 0; n < 3; ++n) {
        EXPECT_EQ(fail(), (Lines{"sleep 0.5", poll("/ucwa/events?ack=1")}));
        deliver(R"({"_links":{"next":{"href":"/unused"}}})");
    }
    FakeConnection& replaced = transport.lastPoll();
    deliver(batch("/n"));
    EXPECT_EQ(fail(), (Lines{"sleep 0.5", poll("/n")}));
    replaced.simulateFailure();
    EXPECT_EQ(journal.take(), (Lines{"sleep 0.5", poll("/n")}));
}

// Descriptors and memory used up by a server that sends more and more news on polls it never ends; or a limit
// that changes what the channel does: news count on any poll, each event sends its own, and the oldest is
// closed without a word, even while it is read.
TEST_F(EventChannelFixture, SixteenPollsAreHeldAtMost) {
    std::string strEvents = kP;
    for (int n = 1; n < 15; ++n)
        strEvents += "," + kP;
    EXPECT_EQ(deliver(batch("/n", strEvents)), heard(15)); // and the one they came on
    FakeConnection& oldest = *transport.polls().front();
    oldest.simulateData(batch("/o", kP + "," + kP));
    const auto heardAndClosed = [](const std::string& strClosed) {
        return Lines{kAsk, "report 55534243004002ef", "status Busy",
                     "cancel https://lync.example" + strClosed, poll("/o")};
    };
    Lines expected = heardAndClosed("/ucwa/events?ack=1");
    for (const std::string& strLine : heardAndClosed("/n"))
        expected.push_back(strLine);
    EXPECT_EQ(journal.take(), expected);
    transport.lastPoll().simulateEnd(); // makes room for one
    transport.polls().at(2)->simulateData(batch("/p"));
    transport.polls().at(2)->simulateFailure(); // its next one takes its place
    EXPECT_EQ(journal.take({"cancel", "request"}), Lines{kAsk});
}

// A light that goes on following after the user has left, also by a poll that was replaced; a call flag that
// outlives the connection; or an end so thorough that a sign-in still under way can't follow any more.
TEST_F(EventChannelFixture, AbortSilencesTheChannelAndForgetsThePresence) {
    deliver(batch("/m"));
    deliver(batch("/n"));
    ASSERT_TRUE(client().IsUserOnCall());
    client().abortEventChannelConnection();
    EXPECT_EQ(journal.take(),
              (Lines{"cancel https://lync.example/n", // the one that is held comes first
                     "cancel https://lync.example/ucwa/events?ack=1", "cancel https://lync.example/m"}));
    EXPECT_EQ(client().getPresenceStatus(), "");
    EXPECT_FALSE(client().IsUserOnCall());
    for (const auto& each : std::vector(transport.polls())) {
        each->simulateData(batch("/n"));
        each->simulateFailure();
    }
    EXPECT_EQ(journal.take(), Lines{});
    client().httpGet_EventChannels();
    EXPECT_EQ(deliver(batch("/n")), heard(1));
}

// A channel that counts as open after it has ended, or as ended when it has not.
TEST_F(EventChannelFixture, ChannelSaysWhetherItFollows) {
    using State = vellux::ChannelState;
    const auto state = [this] { return client().channel().get().state; };
    EXPECT_EQ(state(), State::Open);
    FakeConnection& first = transport.lastPoll();
    deliver(batch("/n"));
    fail(); // is opened again
    EXPECT_EQ(state(), State::Open);
    deliver(batch("/m", R"({"link":{"rel":"note"},"type":"updated"})"));
    EXPECT_EQ(state(), State::Open);
    transport.lastPoll().simulateEnd();
    EXPECT_EQ(state(), State::Open); // the first has been replaced, but is still heard
    first.simulateEnd();
    EXPECT_EQ(state(), State::Ended);
    client().httpGet_EventChannels();
    EXPECT_EQ(state(), State::Open);
    deliver(batch("/a b")); // makes no URL
    EXPECT_EQ(state(), State::Open);
    transport.lastPoll().simulateFailure();
    EXPECT_EQ(state(), State::Ended);
    client().abortEventChannelConnection();
    EXPECT_EQ(state(), State::Closed);
    client().httpGet_EventChannels();
    EXPECT_EQ(state(), State::Ended);
}

} // namespace
