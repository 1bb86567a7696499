// The HTTP adapter against sockets: what goes out byte by byte, to whom, and what is made of what comes back.

#include "adapters/curl/CurlTransport.h"
#include "adapters/curl/CurlPolicy.h"
#include "fakes/ProgramFixture.h"
#include "server/RawServer.h"

#include <pthread.h>
#include <sys/resource.h>

using vellux::HttpConnection;
using vellux::HttpError;
using vellux::HttpRequest;
using vellux::HttpResponse;
using vellux::simulator::CertificateAuthority;

namespace {

using Texts = std::vector<std::string>;

std::atomic<int> nQueued{0}; // calls to the main thread

HttpRequest get(const std::string& strUrl) {
    return {"GET", strUrl, {{"Content-Type", "application/json"}}, {}, {}};
}
/// With a credential that belongs to the URL of its own.
HttpRequest authorized(const std::string& strUrl) {
    return {"GET", strUrl, {{"Authorization", "Bearer T"}}, {}, {}, strUrl};
}
HttpRequest post(const std::string& strUrl, const std::string& strBody) {
    return {"POST",
            strUrl,
            {{"Content-Type", "application/json"}, {"Content-Length", std::to_string(strBody.size())}},
            strBody,
            {},
            strUrl};
}

/// Journals what a poll hears as "response", "data ...", "complete" and "failed".
class CurlTransportFixture : public ProgramFixture, protected vellux::HttpConnectionDelegate {
protected:
    CurlTransportFixture() : ProgramFixture(std::make_unique<vellux::CallQueue>([] { ++nQueued; })) {
        setenv("http_proxy", "http://127.0.0.1:1", 1); // to be ignored when told to
    }

    RawServer::Tls secure() const { return {*authority.issueServerIdentity()}; }
    HttpResponse send(HttpRequest request) {
        request.timeout = std::chrono::seconds(20);
        return curl.sendSynchronousRequest(request);
    }
    std::shared_ptr<HttpConnection> poll(const std::string& strUrl, int nTimeout = 20) {
        HttpRequest request = get(strUrl);
        request.timeout = std::chrono::seconds(nTimeout);
        vellux::assertMainThread(mainThread);
        auto connection = curl.createConnection(request, *this);
        connection->start();
        return connection;
    }
    /// Leaves main's calls alone.
    void waitFor(const std::function<bool()>& condition) {
        while (!condition())
            journal.waitForChange();
    }
    Lines heard() { return journal.lines({"response", "data", "complete", "failed"}); }
    void runUntilHeard(std::size_t nCount) {
        runUntil([&] { return heard().size() >= nCount; }, "what is heard");
    }
    void runUntilTheEnd() {
        runUntil([&] { return journal.count("complete") + journal.count("failed") > 0; }, "the end");
    }

    void connectionDidReceiveResponse(HttpConnection&) override { hear("response"); }
    void connectionDidReceiveData(HttpConnection&, std::string_view data) override {
        hear("data " + std::string(data));
    }
    void connectionDidFinishLoading(HttpConnection&) override { hear("complete"); }
    void connectionDidFailWithError(HttpConnection&, const HttpError&) override { hear("failed"); }
    void hear(const std::string& strLine) {
        EXPECT_TRUE(mainThread.isCurrent());
        journal.add(strLine);
    }

    const CertificateAuthority authority = *CertificateAuthority::create();
    vellux::CurlTransport curl{mainThread, {authority.pem(), false}};
};

} // namespace

// Guards against fields that curl adds, reorders or repeats: servers are particular about this wire form.
TEST_F(CurlTransportFixture, SendsExactlyTheseBytes) {
    RawServer server({RawServer::answer("{}"), RawServer::answer("{}"), RawServer::answer("{}")}, secure());
    const std::string strForm = "grant_type=password&username=C\\p&password=\xC3\xA9+&=";
    EXPECT_TRUE(send(post(server.origin() + "/WebTicket/oauthtoken", strForm)).succeeded());
    HttpRequest blank = post(server.origin() + "/a/./../b?ack=1", "{}");
    blank.headerFields.insert(blank.headerFields.begin() + 1, {"Authorization", "  "});
    EXPECT_TRUE(send(blank).succeeded());
    EXPECT_TRUE(send(authorized(server.origin() + "/p")).succeeded());
    const std::string strHost = " HTTP/1.1\r\nHost: " + server.host() + "\r\n",
                      strType = "Content-Type: application/json\r\n";
    EXPECT_EQ(
        server.requests(),
        (Texts{"POST /WebTicket/oauthtoken" + strHost + strType + "Content-Length: 47\r\n\r\n" + strForm,
               "POST /a/./../b?ack=1" + strHost + strType + "Authorization:\r\nContent-Length: 2\r\n\r\n{}",
               "GET /p" + strHost + "Authorization: Bearer T\r\n\r\n"}));
    EXPECT_EQ(server.connections(), 1) << "all requests ride on one connection";
}

// Guards against reading the status code, against taking "no content" for "no body" or the reverse, and
// against refusing a body that is still small enough.
TEST_F(CurlTransportFixture, TellsBodiesFromFailures) {
    const std::string strHead = "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n", strZero("a\0b", 3),
                      strLargest(16 * 1024 * 1024, 'x');
    const struct {
        const char* strWhat;
        RawServer::Reply reply;
        std::optional<std::string> body;
        bool bError = false;
    } rows[] = {
        {"error page", RawServer::answer("<p>", "500 Oh"), "<p>"},
        {"no content", {RawServer::send("HTTP/1.1 204 No Content\r\n\r\n")}, ""},
        {"empty", RawServer::answer(""), ""},
        {"zero bytes inside", RawServer::answer(strZero), strZero},
        {"the largest", RawServer::answer(strLargest), strLargest},
        {"cut in the body", {RawServer::send(strHead + "half"), RawServer::close()}, "half", true},
        {"cut before the body", {RawServer::send(strHead), RawServer::close()}, {}, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.strWhat);
        RawServer server({row.reply});
        const HttpResponse answer = send(get(server.origin() + "/"));
        EXPECT_EQ(answer.error.has_value(), row.bError);
        EXPECT_TRUE(answer.strBody == row.body) << testing::PrintToString(answer.strBody).substr(0, 80);
    }
}

// Guards against a password sent to whatever answers where no authorities are named.
TEST_F(CurlTransportFixture, TrustsNobodyButItsAuthorities) {
    RawServer server({}, secure());
    vellux::CurlTransport client(mainThread, {std::nullopt, false});
    EXPECT_FALSE(client.sendSynchronousRequest(get(server.origin() + "/")).succeeded());
}

// Guards against a token or a link smuggling in a header field, a second request or another protocol.
TEST_F(CurlTransportFixture, RefusesMalformedRequestsBeforeSending) {
    RawServer server({});
    for (const std::string& strValue : Texts{"a\r\nX: y", "a\n", "a\r", std::string("a\0b", 3)}) {
        HttpRequest request = get(server.origin() + "/");
        request.headerFields[0].second = strValue;
        EXPECT_FALSE(send(request).succeeded());
    }
    for (const std::string& strUrl : Texts{server.origin() + "/\xC3\xA9", "file:///etc/hostname", ""})
        EXPECT_FALSE(send(get(strUrl)).succeeded()) << strUrl;
    EXPECT_EQ(server.connections(), 0);
}

// Guards against a redirected sign-in hanging on a body that is no longer sent.
TEST_F(CurlTransportFixture, FollowsRedirectsWithinHttp) {
    RawServer server({RawServer::redirect("/next"), RawServer::answer("there"),
                      RawServer::redirect("/again", "307 Here"), RawServer::answer("twice"),
                      RawServer::redirect("/in"), RawServer::answer("let in")},
                     secure());
    EXPECT_EQ(send(post(server.origin() + "/", "{}")).strBody, "there");
    EXPECT_EQ(send(post(server.origin() + "/", "{}")).strBody, "twice");
    EXPECT_EQ(send(authorized(server.origin() + "/")).strBody, "let in");
    const std::string strRest = " HTTP/1.1\r\nHost: " + server.host() + "\r\n";
    EXPECT_EQ(server.requests().at(1), "GET /next" + strRest + "Content-Type: application/json\r\n\r\n");
    EXPECT_EQ(server.requests().at(3),
              "POST /again" + strRest + "Content-Type: application/json\r\nContent-Length: 2\r\n\r\n{}");
    EXPECT_EQ(server.requests().at(5), "GET /in" + strRest + "Authorization: Bearer T\r\n\r\n");
    RawServer plain({RawServer::redirect(server.origin() + "/"),
                     RawServer::redirect("http://u:p@" + server.host() + "/")});
    EXPECT_TRUE(send(get(plain.origin() + "/")).succeeded()) << "nothing in it that must stay where it is";
    EXPECT_FALSE(send(get(plain.origin() + "/")).succeeded());
    EXPECT_EQ(server.requests().size(), 7U);
}

// Guards against a token or a password that goes in clear, or to another host than the one it belongs to: by
// a link in an answer, by a sign-in that overlaps with another, or by a redirect.
TEST_F(CurlTransportFixture, CredentialsGoNowhereElse) {
    RawServer server({}, secure()), other({}, secure()), plain({});
    const std::string strHome = server.origin() + "/";
    const std::string strOtherName =
        "https://localhost" + server.host().substr(server.host().find(':')) + "/";
    for (const std::string& strUrl :
         Texts{plain.origin() + "/", "http://" + server.host() + "/", other.origin() + "/", strOtherName,
               server.origin() + "@" + other.host() + "/", "https:///" + server.host() + "/",
               "https://u:p@" + server.host() + "/", "https://@" + server.host() + "/"})
        for (HttpRequest request : {authorized(strUrl), post(strUrl, "secret")}) {
            request.strCredentialOrigin = strHome;
            EXPECT_FALSE(send(request).succeeded()) << strUrl;
        }
    HttpRequest unbound = {"GET", strHome, {{"authorization", "Bearer T"}}, {}, {}};
    EXPECT_FALSE(send(unbound).succeeded());
    EXPECT_FALSE(send(authorized(plain.origin() + "/")).succeeded());
    EXPECT_EQ(server.connections() + other.connections() + plain.connections(), 0);
    unbound.strUrl = "https://LYNC.example/x";
    unbound.strCredentialOrigin = "https://lync.example:443/y";
    EXPECT_FALSE(vellux::validate(unbound)) << "the same place, written differently";

    for (const std::string& strUrl : Texts{strOtherName, "https://u:p@" + server.host() + "/"})
        for (const HttpRequest& request : {authorized(strHome), post(strHome, "secret")}) {
            server.addReply(RawServer::redirect(strUrl));
            EXPECT_FALSE(send(request).succeeded()) << strUrl;
        }
    EXPECT_EQ(server.requests().size(), 4U);
}

// Guards against a session that the server ties to a cookie being lost between requests.
TEST_F(CurlTransportFixture, KeepsCookiesInMemory) {
    RawServer server({RawServer::answer("", "200 OK", "Set-Cookie: s=1; Path=/\r\n"), RawServer::answer("")});
    send(get(server.origin() + "/"));
    send(get(server.origin() + "/"));
    EXPECT_NE(server.requests().at(1).find("Cookie: s=1\r\n"), std::string::npos);
}

// Guards against a batch of events falling apart into pieces that are each unreadable. A busy machine may
// really fall silent for 100 ms, so one whole delivery in ten tries is enough; without gathering so much
// never comes at once.
TEST_F(CurlTransportFixture, GathersPiecesThatBelongTogether) {
    const std::string strLong(std::size_t{8} << 20, 'x');
    RawServer server({});
    bool bWhole = false;
    for (int n = 0; n < 10 && !bWhole; ++n) {
        journal.clear();
        server.addReply(RawServer::answer(strLong));
        poll(server.origin() + "/");
        runUntilTheEnd();
        bWhole = heard() == Texts{"response", "data " + strLong, "complete"};
    }
    EXPECT_TRUE(bWhole);
}

// Guards against a batch waiting for the end of an answer that the server keeps open, and against a cut
// connection hiding what came before it.
TEST_F(CurlTransportFixture, DeliversAfterSilenceAndThenTheFailure) {
    RawServer server({{RawServer::send("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nab"),
                       RawServer::waitForGo(), RawServer::send("cd"), RawServer::close()}});
    poll(server.origin() + "/"); // the reference is dropped at once: that cancels nothing
    runUntilHeard(2);
    EXPECT_EQ(heard(), (Texts{"response", "data ab"}));
    server.go();
    runUntilHeard(4);
    EXPECT_EQ(heard(), (Texts{"response", "data ab", "data cd", "failed"}));
}

// Guards against a second start asking twice, and a callback arriving after a cancel, even one already
// queued.
TEST_F(CurlTransportFixture, CallsNobodyAfterCancel) {
    vellux::assertMainThread(mainThread);
    RawServer server({RawServer::answer("one")});
    const auto connection = poll(server.origin() + "/1");
    connection->start();
    waitFor([&] { return nQueued == 2; }); // its data and its end
    connection->cancel();
    connection->cancel();
    mainThread.runPending();
    EXPECT_EQ(heard(), Texts{});
    EXPECT_EQ(server.requests().size(), 1U);
}

// Guards against a long poll that nobody answers lasting forever, one that speaks being cut in the middle of
// a word, and a thread that waits for as long as a server keeps speaking.
TEST_F(CurlTransportFixture, PollsMayFallSilentForSoLongAndRequestsLastForSoLong) {
    RawServer::Reply drip = {RawServer::send("HTTP/1.1 200 OK\r\n"), RawServer::pause()};
    for (int n = 0; n < 9; ++n) // two and a half seconds
        drip.insert(drip.end(), {RawServer::send("A: b\r\n"), RawServer::pause()});
    drip.push_back(RawServer::send("Content-Length: 10\r\n\r\n"));
    for (int n = 0; n < 10; ++n) // and as much again
        drip.insert(drip.end(), {RawServer::pause(), RawServer::send("x")});
    RawServer server({drip, drip, {RawServer::waitForGo()}});
    HttpRequest request = get(server.origin() + "/");
    request.timeout = std::chrono::seconds(2);
    std::thread waiting([&] { EXPECT_TRUE(curl.sendSynchronousRequest(request).error); });
    poll(server.origin() + "/", 2);
    waitFor([&] { return server.requests().size() == 2; });
    runUntilTheEnd();
    waiting.join();
    EXPECT_GE(heard().size(), 4U) << "a piece that is followed by silence doesn't wait for the rest";
    EXPECT_EQ(heard().back(), "complete");
    journal.clear();
    poll(server.origin() + "/", 1);
    runUntilHeard(1);
    EXPECT_EQ(heard(), Texts{"failed"});
}

// Guards against a program that can't end while a server keeps it waiting, or that opens its polls again and
// again while it ends: a waiting thread is freed, and nobody is called back, not even by what is queued
// already.
TEST_F(CurlTransportFixture, CloseFreesAWaitingThreadAndCallsNobody) {
    RawServer server({{RawServer::waitForGo()}, {RawServer::waitForGo()}, RawServer::answer("queued")});
    HttpResponse answer;
    std::thread waiting([&] { answer = send(get(server.origin() + "/")); });
    waitFor([&] { return server.requests().size() == 1; });
    poll(server.origin() + "/");
    waitFor([&] { return server.requests().size() == 2; });
    poll(server.origin() + "/");
    waitFor([&] { return nQueued == 2; });
    curl.close();
    waiting.join();
    EXPECT_TRUE(answer.error.has_value());
    EXPECT_FALSE(send(get(server.origin() + "/")).succeeded());
    poll(server.origin() + "/a b");
    mainThread.runPending();
    EXPECT_EQ(heard(), Texts{});
}

// Guards against an end that hangs, or a program that ends at once, since there was no descriptor or no
// thread left when the first request came; and against one that never tries again.
TEST_F(CurlTransportFixture, FailsWhileNothingIsLeftForIt) {
    rlimit usual{};
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit none{3, usual.rlim_max}; // all of these are taken
    pthread_attr_t usualThread, tooLarge;
    pthread_getattr_default_np(&usualThread);
    pthread_getattr_default_np(&tooLarge);
    pthread_attr_setstacksize(&tooLarge, std::size_t{1} << 46); // no memory has room for it
    const auto attempt = [this](vellux::CurlTransport& itsTransport) {
        vellux::assertMainThread(mainThread);
        const HttpRequest request = get("http://127.0.0.1:1/");
        EXPECT_TRUE(itsTransport.sendSynchronousRequest(request).error.has_value());
        itsTransport.createConnection(request, *this)->start();
    };
    attempt(curl); // what a sanitizer meets for the first time may cost it a descriptor
    runUntilHeard(1);
    for (const bool bThreads : {false, true}) {
        journal.clear();
        vellux::CurlTransport deprived(mainThread, {std::nullopt, false});
        auto ended = std::make_unique<vellux::CurlTransport>(mainThread, vellux::CurlTransportOptions{});
        bThreads ? pthread_setattr_default_np(&tooLarge) : setrlimit(RLIMIT_NOFILE, &none);
        attempt(deprived);
        attempt(*ended);
        ended.reset();
        setrlimit(RLIMIT_NOFILE, &usual);
        pthread_setattr_default_np(&usualThread);
        mainThread.runPending();
        EXPECT_EQ(heard(), Texts{"failed"}) << "and nobody is called back by the one that has ended";
        RawServer server({RawServer::answer("there")});
        EXPECT_EQ(deprived.sendSynchronousRequest(get(server.origin() + "/")).strBody, "there");
    }
}

// Guards against lost wake-ups and mixed-up answers between threads: each round has 8 threads with 50
// requests.
TEST_F(CurlTransportFixture, ServesManyThreads) {
    constexpr int kThreads = 8;
    constexpr int kEach = 50;
    RawServer server(std::vector<RawServer::Reply>(kThreads * kEach, RawServer::answer("ok")));
    std::vector<std::thread> senders;
    std::atomic<int> nGood{0};
    for (int n = 0; n < kThreads; ++n)
        senders.emplace_back([&] {
            for (int k = 0; k < kEach; ++k)
                nGood += send(get(server.origin() + "/")).strBody == "ok" ? 1 : 0;
        });
    for (std::thread& sender : senders)
        sender.join();
    EXPECT_EQ(nGood, kThreads * kEach);
}
