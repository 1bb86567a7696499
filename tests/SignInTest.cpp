// Discovery and sign-in.
#include "fakes/ProgramFixture.h"
#include "fakes/ServerTexts.h"

#include <array>

namespace {

using Text = std::optional<std::string>;
using vellux::HttpResponse;

class SignInFixture : public ProgramFixture {
protected:
    Text signIn(const Text& strHost, const HttpResponse& answer) {
        transport.script("/WebTicket/oauthtoken", {answer});
        return client().httpPost_GetOAuthToken(strHost, "FJORD\\mira", "pw");
    }
    std::string discover(const HttpResponse& answer, const Text& strDomain = "kestrel.example") {
        transport.script("", {answer});
        return client().httpGet_StartAutomaticDiscovery(strDomain, true, false);
    }
    const std::string strTokens = R"({"token_type":"X","access_token":"y z","expires_in":0)";
};

// Escaped credentials, or a length in characters instead of bytes: servers refuse a right password.
TEST_F(SignInFixture, SendsCredentialsVerbatimAndCountsTheirBytes) {
    const std::string strHead =
        "request POST https://lync.kestrel.example/WebTicket/oauthtoken | Content-Type: "
        "application/x-www-form-urlencoded | Content-Length: ";
    const std::array<std::string, 3> rows[] = {
        {"FJORD\\mira", "pw", "51"}, {"", "", "39"}, {"a&b=c+%41 d", "\xC3\xA9", "52"}};
    for (const auto& [strUser, strPassword, strLength] : rows) {
        client().httpPost_GetOAuthToken("lync.kestrel.example", strUser, strPassword);
        EXPECT_EQ(journal.take(), (Lines{strHead + strLength + " | 30 s | grant_type=password&username=" +
                                             strUser + "&password=" + strPassword,
                                         kConnectionAlert}));
    }
}

// A status code or a lifetime read by mistake, a missing alert, or a failure that forgets the earlier
// sign-in.
TEST_F(SignInFixture, AnswerDecidesResultAlertsAndWhatIsKept) {
    scriptServer(R"({"availability":"Busy"})");
    ASSERT_EQ(signIn("first.example", {R"({"token_type":"A","access_token":"b"})", {}}), "A b");
    client().httpPost_SetupApplicationsAndGetPresenceURL("first.example",
                                                         "https://first.example/ucwa/applications", "A b");
    std::string strKept = "first.example/n | Authorization: A b";
    const auto check = [&](const HttpResponse& answer, const Lines& alerts, const Text& strResult = {}) {
        SCOPED_TRACE(answer.strBody.value_or("no body").substr(0, 80));
        journal.clear();
        EXPECT_EQ(signIn("second.example", answer), strResult);
        EXPECT_EQ(journal.lines({"request"}).size(), 1U);
        EXPECT_EQ(journal.take({"alert"}), alerts);
        if (strResult)
            strKept = "second.example/n | Authorization: " + *strResult;
        client().httpGet_EventChannels(); // shows host and Authorization value
        transport.lastPoll().simulateData(batch("/n"));
        EXPECT_EQ(journal.take({"poll", "request"}).back(), "poll GET https://" + strKept + " | 15 s");
    };
    for (const HttpResponse& answer : brokenAnswers(strTokens + "}"))
        check(answer, {kConnectionAlert});
    const std::string strInvalid = "alert Username/Password Pair is invalid";
    check({R"({"error":"invalid_grant","token_type":"X"})", {}}, {strInvalid});
    check({R"({"error":"Invalid_Grant"})", {}}, {});
    check({R"({"error":"unauthorized_client"})", {}}, {});
    check({std::string(17 << 20, '['), {}}, {}); // more than any answer that comes through
    for (const std::string& strBody : badBodies({"token_type"}, R"(,"access_token":"t")"))
        check({strBody, {}}, {});
    for (const std::string& strBody : wrongKinds({"access_token"}, R"(,"token_type":"t")"))
        check({strBody, {}}, {});
    for (const std::string& strBody : wrongKinds({"error"}))
        check({strBody, {}}, {});
    check({R"({"token_type":"","access_token":""})", {}}, {}, " ");
    check({strTokens + R"(,"error":"invalid_grant"})", {}}, {strInvalid}, "X y z");
    check({strTokens + R"(,"error":["invalid_grant"]})", {}}, {}, "X y z");
}

// A request that can't be meant, or an alert where the workflow has its own.
TEST_F(SignInFixture, AbsentArgumentsAndUnformableHostsSendNothing) {
    EXPECT_EQ(client().httpPost_GetOAuthToken({}, "u", "p"), std::nullopt);
    EXPECT_EQ(client().httpPost_GetOAuthToken("lync.example", {}, "p"), std::nullopt);
    EXPECT_EQ(client().httpPost_GetOAuthToken("lync.example", "u", {}), std::nullopt);
    EXPECT_EQ(discover({}, {}), "");
    for (const std::string& strHost : kBadHosts) {
        EXPECT_EQ(signIn(strHost, {strTokens + "}", {}}), std::nullopt);
        EXPECT_EQ(discover({}, strHost), "");
    }
    EXPECT_EQ(journal.take(), Lines{});
}

// One of the four addresses wrong, a second try by itself, or an alert for a search that may well fail.
TEST_F(SignInFixture, DiscoveryAsksOneAddressOnce) {
    const auto ask = [&](bool bHttps, bool bInternal) {
        EXPECT_EQ(client().httpGet_StartAutomaticDiscovery("fjord.example", bHttps, bInternal), "");
        return journal.take();
    };
    const std::string strTail = ".fjord.example | Content-Type: application/json | 30 s";
    EXPECT_EQ(ask(true, true), Lines{"request GET https://lyncdiscoverinternal" + strTail});
    EXPECT_EQ(ask(true, false), Lines{"request GET https://lyncdiscover" + strTail});
    EXPECT_EQ(ask(false, true), Lines{"request GET http://lyncdiscoverinternal" + strTail});
    EXPECT_EQ(ask(false, false), Lines{"request GET http://lyncdiscover" + strTail});
}

// The host cut out of the link wrongly, or a crash over a link of an unexpected shape.
TEST_F(SignInFixture, DiscoveryCutsTheHostOutOfTheSelfLink) {
    const auto self = [](const std::string& strHref) {
        return R"({"_links":{"self":{"href":")" + strHref + R"("}}})";
    };
    const std::pair<const char*, const char*> rows[] = {
        {"https://lyncdiscover.kestrel.example/root?d=kestrel.example", "lyncdiscover.kestrel.example"},
        {"https://kestrel.example", "kestrel.example"},
        {"https://web.fjord.example/root", "web.fjord.example/rootkestrel.example"},
        {"https://a.example//b//c", "a.examplekestrel.example"},
        {"lyncdiscover.kestrel.example/root", ""},
        {"kestrel.example//web", ""},
        {"//", "kestrel.example"},
        {"", ""}};
    for (const auto& [strHref, strHost] : rows)
        EXPECT_EQ(discover({self(strHref), {}}), strHost) << strHref;
    EXPECT_EQ(discover({self("https://web.example/r"), {}}, ""), "web.example/r"); // "" occurs nowhere
    for (const HttpResponse& answer : brokenAnswers(self("https://web.kestrel.example")))
        EXPECT_EQ(discover(answer), "");
    for (const std::string& strBody : badBodies({"_links", "self", "href"}))
        EXPECT_EQ(discover({strBody, {}}), "") << strBody.substr(0, 80);
    for (const std::string& strLine : journal.take())
        EXPECT_TRUE(strLine.starts_with("request GET https://lyncdiscover.")) << strLine;
}

} // namespace
