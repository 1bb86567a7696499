// The HTTP adapter against the simulator's presence server: whom it trusts, and how it rides on connections.

#include "adapters/curl/CurlTransport.h"
#include "server/PresenceServer.h"
#include "threads/CallQueue.h"

#include <gtest/gtest.h>

#include <string>

using namespace vellux::simulator;

namespace {

class CurlTlsTest : public testing::Test {
protected:
    bool reaches(vellux::CurlTransport& transport, const std::string& strHost) {
        return transport
            .sendSynchronousRequest(
                {"GET", "https://" + strHost + "/", {{"Content-Type", "application/json"}}, {}, {}})
            .succeeded();
    }

    vellux::CallQueue mainThread;
    const CertificateAuthority authority = *CertificateAuthority::create();
    const CertificateAuthority other = *CertificateAuthority::create();
    const std::unique_ptr<PresenceServer> server = PresenceServer::start(authority, {"u", "p"});
};

} // namespace

// Guards against a password being typed into whatever answers: the system's authorities and foreign ones don't
// vouch for this server, and its own don't under a name that is not its.
TEST_F(CurlTlsTest, TrustsNobodyButItsAuthorities) {
    vellux::CurlTransport system(mainThread, {std::nullopt, false});
    vellux::CurlTransport foreign(mainThread, {other.pem(), false});
    vellux::CurlTransport own(mainThread, {authority.pem(), false});
    EXPECT_FALSE(reaches(system, server->host()));
    EXPECT_FALSE(reaches(foreign, server->host()));
    EXPECT_TRUE(reaches(own, server->host()));
    EXPECT_TRUE(reaches(own, "localhost:" + std::to_string(server->port())));
    EXPECT_FALSE(reaches(own, "other.localhost:" + std::to_string(server->port())));
}

// Guards against a server that breaks the connection in the middle of a body passing for one that answered.
TEST_F(CurlTlsTest, TellsACutConnection) {
    vellux::CurlTransport transport(mainThread, {authority.pem(), false});
    Interference interference;
    interference.cutOff = CutOff::InBody;
    server->interfere(Route::Discovery, interference);
    EXPECT_FALSE(reaches(transport, server->host()));
    EXPECT_TRUE(reaches(transport, server->host()));
}
