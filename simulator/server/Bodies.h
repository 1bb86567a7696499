// The bodies of the presence server's answers, shaped like those of real servers: all links but those of the
// user resource and of discovery are relative, and members that the client does not read are there all the
// same.
#pragma once

#include <cstdint>
#include <string>

namespace vellux::simulator {

/// What an application says about itself.
struct ApplicationFacts {
    std::string strPath;         ///< its own path, without a trailing slash
    std::string strUserAgent;    ///< as it registered
    bool bMadeAvailable = false; ///< offers its presence then, and makeMeAvailable before
};

/// The user's presence; a member that is "" is left out.
struct Presence {
    std::string strAvailability;
    std::string strActivity;
};

std::string discoveryBody();
std::string tokenBody(const std::string& strAccessToken);
std::string invalidGrantBody();
/// Names another host for the applications than the one that was asked.
std::string userBody();
std::string applicationBody(const ApplicationFacts& application);
std::string presenceBody(const std::string& strApplicationPath, const Presence& presence);

// Batches of events. `nAck` is the number of the poll that they answer; the next one has the number after it.

/// What a freshly registered application hears first: itself, its presence, note and location, and more.
std::string firstBatchBody(const std::string& strApplicationPath, std::int64_t nAck);
std::string presenceBatchBody(const std::string& strApplicationPath, std::int64_t nAck);
/// Ends a poll without news, with a link to the next one.
std::string nextOnlyBody(const std::string& strNextPoll);
/// Tells an application that lost count which poll the server expects.
std::string resyncBody(const std::string& strExpectedPoll);

// Errors.

/// The page of a web server, not JSON, for a request without a valid Authorization field.
std::string unauthorizedPage();
std::string notFoundPage();
std::string badRequestBody();
std::string goneBody();
std::string expiredBody();
std::string pollReplacedBody();

} // namespace vellux::simulator
