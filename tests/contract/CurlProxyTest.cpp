// Which proxies the HTTP adapter uses, and when it asks for them.

#include "adapters/curl/CurlTransport.h"
#include "fakes/Journal.h"
#include "server/RawServer.h"
#include "threads/CallQueue.h"

#include <gtest/gtest.h>

using vellux::HttpRequest;

namespace {

class CurlProxyFixture : public testing::Test {
protected:
    bool succeeds(const HttpRequest& request) {
        return transport.sendSynchronousRequest(request).succeeded();
    }

    Journal journal; // the transport's thread writes, too
    std::string strProxy;
    vellux::CallQueue mainThread;
    vellux::CurlTransport transport{
        mainThread,
        {std::nullopt, true,
         [this](const std::string& strUrl, bool bAsk) {
             journal.add((bAsk ? "ask " : "use ") + strUrl);
             return std::optional(strProxy);
         },
         [this](const std::string& strUrl) { journal.add("unconnected " + strUrl); }}};
};

} // namespace

// A proxy that is asked for with every poll, on the main thread; or never again, although another network
// needs another; the environment's that is used in place of none.
TEST_F(CurlProxyFixture, LooksAgainAtASignInAndAfterAConnectionThatFailed) {
    RawServer server({RawServer::answer("{}", "200 OK", "Connection: close\r\n"), {RawServer::close()}});
    const HttpRequest signIn{"POST", "https://elsewhere.example/token", {}, "", {}};
    const HttpRequest query{"GET", "https://elsewhere.example/me", {{"Authorization", "Bearer T"}}, {},
                            {},    "https://elsewhere.example/"};
    setenv("http_proxy", "http://127.0.0.1:1", 1);
    strProxy = "http://127.0.0.1:1";
    EXPECT_FALSE(succeeds(signIn));
    EXPECT_FALSE(succeeds(query));
    strProxy = "";
    EXPECT_TRUE(succeeds({"GET", server.origin() + "/", {}, {}, {}}));
    EXPECT_FALSE(succeeds({"POST", server.origin() + "/broken", {}, "", {}})); // after it was connected
    EXPECT_EQ(
        journal.lines(),
        (Journal::Lines{"ask https://elsewhere.example/token", "unconnected https://elsewhere.example/token",
                        "use https://elsewhere.example/me", "unconnected https://elsewhere.example/me",
                        "ask " + server.origin() + "/", "ask " + server.origin() + "/broken"}));
}
