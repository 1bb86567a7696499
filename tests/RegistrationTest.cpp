// The user's applications resource and the registration of an endpoint.
#include "fakes/ProgramFixture.h"
#include "fakes/ServerTexts.h"

#include <regex>

namespace {

using Text = std::optional<std::string>;
using vellux::HttpResponse;

const std::string kHost = "lync.kestrel.example", kApps = "https://lync.kestrel.example/ucwa/apps";

std::string application(const std::string& strPresence) {
    return R"({"_embedded":{"me":{"_links":{"presence":{"href":")" + strPresence + R"("}}}}})";
}
/// An application that offers to make the user available; its presence link is not to be read yet.
std::string offer(const std::string& strHref = "/mma", const std::string& strKey = "makeMeAvailable") {
    return R"({"_embedded":{"me":{"_links":{"presence":{"href":"/early"},")" + strKey + R"(":{"href":")" +
           strHref + R"("}}}}})";
}

class RegistrationFixture : public ProgramFixture {
protected:
    Text applicationsUrl(const HttpResponse& answer, const Text& strHost = kHost) {
        transport.script("/Autodiscover/AutodiscoverService.svc/root/oauth/user", {answer});
        return client().httpGet_ApplicationServiceURL(strHost, "Bearer t");
    }
    Text setUp(const Text& strHost = kHost, const Text& strUrl = kApps, const Text& strAuth = "Bearer t") {
        return client().httpPost_SetupApplicationsAndGetPresenceURL(strHost, strUrl, strAuth);
    }
    /// What a registration sent and showed, a letter each: R a registration, M and m make me available (at
    /// "/mma" and at ""), ! the connection alert, else the line. The endpoint ids come into `ids`.
    std::string exchanged() {
        static const std::regex id("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}");
        const std::string strHead =
            " | Content-Type: application/json | Authorization: Bearer t | Content-Length: ";
        const std::map<std::string, std::string> letters = {
            {"request POST " + kApps + strHead +
                 "130 | 30 s | {'Culture':'en-US','endpointId':'ID','userAgent':'Virelto-ID'}",
             "R"},
            {"request POST https://" + kHost + "/mma" + strHead + "2 | 30 s | {}", "M"},
            {"request POST https://" + kHost + strHead + "2 | 30 s | {}", "m"},
            {kConnectionAlert, "!"}};
        std::string strLetters;
        for (const std::string& strLine : journal.take()) {
            for (std::sregex_iterator match(strLine.begin(), strLine.end(), id), end; match != end; ++match)
                ids.push_back(match->str());
            const auto found = letters.find(std::regex_replace(strLine, id, "ID"));
            strLetters += found == letters.end() ? strLine : found->second;
        }
        return strLetters;
    }
    Lines ids;
};

// A request that goes to the host the server named: it may not be reachable from the user's network.
TEST_F(RegistrationFixture, ApplicationsLinkIsRewrittenToTheTypedHost) {
    const std::pair<const char*, const char*> rows[] = {
        // H is the typed host
        {"https://pool7.fjord.example/ucwa/apps", "https://H/ucwa/apps"},
        {"https://p.example/p.example/x?h=p.example&P.example", "https://H/H/x?h=H&P.example"},
        {"https://p.example:8443/p.example", "https://H/p.example"},
        {"https://kestrel.example/x", "https://H/x"},
        {"https://s", "httpH://H"},
        {"https:///apps", "https:///apps"},
        {"/ucwa/apps", "/ucwa/H"},
        {"a//b", "a//H"},
        {"a/b", "a/b"},
        {"apps", "apps"},
        {"", ""}};
    for (const auto& [strHref, strUrl] : rows) {
        const std::string strBody =
            R"({"_links":{"applications":{"href":")" + std::string(strHref) + R"("}}})";
        EXPECT_EQ(applicationsUrl({strBody, {}}), std::regex_replace(strUrl, std::regex("H"), kHost))
            << strHref;
        EXPECT_EQ(journal.take(), Lines{"request GET "
                                        "https://lync.kestrel.example/Autodiscover/AutodiscoverService.svc/"
                                        "root/oauth/user | Authorization: Bearer t | 30 s"});
    }
}

// A user without an applications resource, or a broken answer, taken for a link; an alert too many or too
// few.
TEST_F(RegistrationFixture, WithoutAnApplicationsLinkThereIsNoUrl) {
    const std::string strGood = R"({"_links":{"applications":{"href":"https://p.example/a"}}})";
    for (const HttpResponse& answer : brokenAnswers(strGood)) {
        EXPECT_EQ(applicationsUrl(answer), std::nullopt);
        EXPECT_EQ(journal.take({"alert"}), Lines{kConnectionAlert});
        EXPECT_EQ(journal.take({"request"}).size(), 1U);
    }
    for (const std::string& strBody : badBodies({"_links", "applications", "href"}))
        EXPECT_EQ(applicationsUrl({strBody, {}}), std::nullopt) << strBody.substr(0, 80);
    EXPECT_EQ(journal.take({"alert"}), Lines{});
    journal.clear();
    EXPECT_EQ(applicationsUrl({strGood, {}}, {}), std::nullopt);
    EXPECT_EQ(client().httpGet_ApplicationServiceURL(kHost, {}), std::nullopt);
    for (const std::string& strHost : kBadHosts)
        EXPECT_EQ(applicationsUrl({strGood, {}}, strHost), std::nullopt);
    EXPECT_EQ(journal.take(), Lines{});
}

// Reading the wrong one of up to three answers, registering too often, or minding what does not matter.
TEST_F(RegistrationFixture, AvailabilityIsMadeAndTheRightAnswerRead) {
    using Answers = std::vector<HttpResponse>;
    const auto check = [&](const Answers& registrations, const Answers& available,
                           const std::string& strExchanged, const Text& strPath = {}) {
        SCOPED_TRACE(registrations.front().strBody.value_or("none").substr(0, 120));
        transport.script("/ucwa/apps", registrations);
        transport.script("/mma", available);
        transport.script("", available);
        EXPECT_EQ(setUp(), strPath ? "https://" + kHost + *strPath : Text{});
        EXPECT_EQ(exchanged(), strExchanged);
    };
    const HttpResponse plain{application("/p1"), {}}, made{application("/p2"), {}}, offered{offer(), {}},
        empty{"", {}};
    check({plain}, {}, "R", "/p1");
    check({{application(""), {}}}, {}, "R", "");
    check({offered, plain}, {empty}, "RMR", "/p1");
    check({offered, plain}, {{"", vellux::HttpError{"reset"}}}, "RMR", "/p1");
    check({offered, plain}, {{"\xFF", {}}}, "RMR", "/p1");
    check({offered, offered}, {empty}, "RMR", "/early");
    check({{offer(""), {}}, plain}, {empty}, "RmR", "/p1");
    check({offered, plain}, {made}, "RM", "/p2");
    check({offered, plain}, {{made.strBody, vellux::HttpError{"reset"}}}, "RM", "/p2");
    check({offered, plain}, {{" ", {}}}, "RM");
    check({offered, plain}, {{"{}", {}}}, "RM");
    check({offered, plain}, {FakeHttpTransport::failure()}, "RM");
    check({offered, plain}, {{}}, "RM");
    check({offered, empty}, {empty}, "RMR");
    for (const HttpResponse& broken : brokenAnswers(*plain.strBody)) {
        check({broken}, {}, "R!");
        check({offered, broken}, {empty}, "RMR!");
    }
    for (const std::string& strBody :
         {*plain.strBody + "\xFF", offer("/a b"), offer("/mma", "MakeMeAvailable"),
          R"({"note":"MAKEmeAVAILABLE",)" + plain.strBody->substr(1), std::string("makemeavailable")})
        check({{strBody, {}}}, {}, "R");
    for (const std::string& strBody :
         wrongKinds({"_embedded", "me", "_links", "makeMeAvailable", "href"}, R"(,"makeMeAvailable":1)"))
        check({{strBody, {}}}, {}, "R");
    for (const std::string& strBody : badBodies({"_embedded", "me", "_links", "presence", "href"}))
        check({{strBody, {}}}, {}, "R");
}

// One id for all endpoints, and the server mixes up two connections; a new one in between, and it sees two.
TEST_F(RegistrationFixture, OneEndpointIdForEachConnection) {
    transport.script("/mma", "");
    for (int n = 0; n < 2; ++n) {
        transport.script("/ucwa/apps", {{offer(), {}}, {application("/p"), {}}});
        setUp();
        EXPECT_EQ(exchanged(), "RMR");
    }
    ASSERT_EQ(ids.size(), 8U); // two a registration
    EXPECT_EQ(ids, (Lines{ids[0], ids[0], ids[0], ids[0], ids[4], ids[4], ids[4], ids[4]}));
    EXPECT_NE(ids[0], ids[4]);
}

// Half a success that overwrites links in use, or a lost link that ends a working event channel.
TEST_F(RegistrationFixture, KeepsTheEarlierLinksWhereTheAnswerHasNone) {
    scriptServer("{}");
    client().httpPost_GetOAuthToken(kHost, "u", "p");
    const auto check = [&](const std::string& strBody, const std::string& strPresence,
                           const std::string& strEvents) {
        transport.script("/ucwa/apps", strBody);
        setUp();
        journal.clear();
        client().httpGet_EventChannels();
        transport.lastPoll().simulateData(batch("/n")); // asks for the presence, in vain
        const std::string strAuth = " | Authorization: Bearer T0k3n | ", strServer = " GET https://" + kHost;
        EXPECT_EQ(journal.take({"poll", "request"}),
                  (Lines{"poll" + strServer + strEvents + strAuth + "15 s",
                         "request" + strServer + strPresence + strAuth + "30 s"}));
    };
    const auto withEvents = [](const std::string& strEvents, const std::string& strRest) {
        return R"({"_links":{"events":{"href":)" + strEvents + "}}" + strRest;
    };
    const std::string strSecond = "," + application("/p2").substr(1);
    check(withEvents(R"("/ev1")", "," + application("/p1").substr(1)), "/p1", "/ev1");
    check(withEvents(R"("/lost")", "}"), "/p1", "/ev1");
    check(application("/p2"), "/p2", "/ev1");
    check(withEvents("7", strSecond), "/p2", "/ev1");
    check(withEvents(R"("")", strSecond), "/p2", "");
}

// A request without a destination, or the fault reported as one of the network.
TEST_F(RegistrationFixture, AbsentArgumentsAndUnformableUrlsSendNothing) {
    EXPECT_EQ(setUp({}), std::nullopt);
    EXPECT_EQ(setUp(kHost, {}), std::nullopt);
    EXPECT_EQ(setUp(kHost, kApps, {}), std::nullopt);
    EXPECT_EQ(setUp(kHost, ""), std::nullopt);
    for (const std::string& strHost : kBadHosts)
        EXPECT_EQ(setUp(kHost, "https://" + strHost + "/apps"), std::nullopt);
    EXPECT_EQ(journal.take(), Lines{});
}

} // namespace
