#include "server/Bodies.h"

#include <nlohmann/json.hpp>

#include <string_view>
#include <utility>
#include <vector>

namespace vellux::simulator {

namespace {

using Json = nlohmann::ordered_json; // members keep the order in which real servers write them

// Hosts that nobody reaches: what the user typed decides where requests go.
constexpr const char* kDiscoveryHost = "https://lyncdiscover.example.test";
constexpr const char* kPoolHost = "https://pool01.example.test";

constexpr const char* kUserName = "Robin Example";
constexpr const char* kUserAddress = "robin@example.test";
constexpr int kTokenLifetime = 28800; // s

// Names of links with what follows the base path.
using Links = std::vector<std::pair<const char*, std::string_view>>;

Json link(const std::string& strHref) {
    return Json{{"href", strHref}};
}

Json linksFrom(const std::string& strBase, const Links& links) {
    Json made = Json::object();
    for (const auto& [strName, strTail] : links)
        made[strName] = link(strBase + std::string(strTail));
    return made;
}

std::string text(const Json& body) {
    return body.dump(1);
}

std::string eventsHref(const std::string& strApplicationPath, std::int64_t nAck) {
    return strApplicationPath + "/events?ack=" + std::to_string(nAck);
}

Json event(const char* strRel, const std::string& strHref, const char* strType) {
    return Json{{"link", Json{{"rel", strRel}, {"href", strHref}}}, {"type", strType}};
}

Json sender(const char* strRel, const std::string& strHref, Json events) {
    return Json{{"rel", strRel}, {"href", strHref}, {"events", std::move(events)}};
}

Json batch(const std::string& strApplicationPath, std::int64_t nAck, Json senders) {
    return Json{{"_links", Json{{"self", link(eventsHref(strApplicationPath, nAck))},
                                {"next", link(eventsHref(strApplicationPath, nAck + 1))}}},
                {"sender", std::move(senders)}};
}

Json me(const ApplicationFacts& application) {
    const Links before = {{"self", ""},
                          {"makeMeAvailable", "/makeMeAvailable"},
                          {"callForwardingSettings", "/callForwardingSettings"},
                          {"phones", "/phones"}};
    const Links after = {{"self", ""},
                         {"note", "/note"},
                         {"presence", "/presence"},
                         {"location", "/location"},
                         {"reportMyActivity", "/reportMyActivity"},
                         {"callForwardingSettings", "/callForwardingSettings"},
                         {"phones", "/phones"}};
    Json links = linksFrom(application.strPath + "/me", application.bMadeAvailable ? after : before);
    links["photo"] = link(application.strPath + "/photos/" + kUserAddress);
    return Json{{"name", kUserName},
                {"uri", std::string("sip:") + kUserAddress},
                {"_links", std::move(links)},
                {"rel", "me"}};
}

Json people(const std::string& strApplicationPath) {
    return Json{{"_links", linksFrom(strApplicationPath + "/people",
                                     {{"self", ""},
                                      {"presenceSubscriptions", "/presenceSubscriptions"},
                                      {"subscribedContacts", "/subscribedContacts"},
                                      {"myGroups", "/groups"},
                                      {"myContacts", "/contacts"},
                                      {"search", "/search"}})},
                {"rel", "people"}};
}

Json onlineMeetings(const std::string& strApplicationPath) {
    return Json{{"_links", linksFrom(strApplicationPath + "/onlineMeetings",
                                     {{"self", ""},
                                      {"myOnlineMeetings", "/myOnlineMeetings"},
                                      {"onlineMeetingPolicies", "/policies"},
                                      {"phoneDialInInformation", "/phoneDialInInformation"}})},
                {"rel", "onlineMeetings"}};
}

Json communication(const std::string& strApplicationPath, Json modalities) {
    return Json{{"7a3de1f0-52c4-4d0e-9b57-1f8c2a6e9d34", "please pass this in a PUT request"},
                {"supportedModalities", std::move(modalities)},
                {"supportedMessageFormats", Json::array({"Plain"})},
                {"_links", linksFrom(strApplicationPath + "/communication",
                                     {{"self", ""},
                                      {"conversations", "/conversations?filter=active"},
                                      {"startMessaging", "/messagingInvitations"},
                                      {"joinOnlineMeeting", "/onlineMeetingInvitations"}})},
                {"rel", "communication"},
                {"etag", "2718281828"}};
}

} // namespace

std::string discoveryBody() {
    return text(Json{{"_links", linksFrom(kDiscoveryHost,
                                          {{"self", "/Autodiscover/AutodiscoverService.svc/root"},
                                           {"user", "/Autodiscover/AutodiscoverService.svc/root/oauth/user"},
                                           {"xframe", "/Autodiscover/XFrame/XFrame.html"}})}});
}

std::string tokenBody(const std::string& strAccessToken) {
    return text(Json{{"access_token", strAccessToken},
                     {"expires_in", kTokenLifetime},
                     {"ms_rtc_identityscope", "local"},
                     {"token_type", "Bearer"}});
}

std::string invalidGrantBody() {
    return text(Json{{"error", "invalid_grant"}});
}

std::string userBody() {
    return text(
        Json{{"_links", linksFrom(kPoolHost, {{"self", "/Autodiscover/AutodiscoverService.svc/root/user"},
                                              {"applications", "/ucwa/oauth/v1/applications"},
                                              {"xframe", "/Autodiscover/XFrame/XFrame.html"}})}});
}

std::string applicationBody(const ApplicationFacts& application) {
    Json links =
        linksFrom(application.strPath, {{"self", ""}, {"policies", "/policies"}, {"batch", "/batch"}});
    links["events"] = link(eventsHref(application.strPath, 1));
    return text(
        Json{{"culture", "en-US"},
             {"userAgent", application.strUserAgent},
             {"_links", std::move(links)},
             {"_embedded", Json{{"me", me(application)},
                                {"people", people(application.strPath)},
                                {"onlineMeetings", onlineMeetings(application.strPath)},
                                {"communication", communication(application.strPath, Json::array())}}},
             {"rel", "application"}});
}

std::string presenceBody(const std::string& strApplicationPath, const Presence& presence) {
    Json body = Json::object();
    if (!presence.strActivity.empty())
        body["activity"] = presence.strActivity;
    if (!presence.strAvailability.empty())
        body["availability"] = presence.strAvailability;
    body["_links"] = linksFrom(strApplicationPath, {{"self", "/me/presence"}});
    body["rel"] = "presence";
    return text(body);
}

std::string firstBatchBody(const std::string& strApplicationPath, std::int64_t nAck) {
    const std::string strMe = strApplicationPath + "/me";
    const std::string strCommunication = strApplicationPath + "/communication";
    Json changed = event("communication", strCommunication, "updated");
    changed["_embedded"]["communication"] = communication(strApplicationPath, Json::array({"Messaging"}));
    return text(batch(strApplicationPath, nAck,
                      Json::array({sender("me", strMe,
                                          Json::array({event("me", strMe, "updated"),
                                                       event("presence", strMe + "/presence", "added"),
                                                       event("note", strMe + "/note", "added"),
                                                       event("location", strMe + "/location", "added")})),
                                   sender("communication", strCommunication, Json::array({changed}))})));
}

std::string presenceBatchBody(const std::string& strApplicationPath, std::int64_t nAck) {
    const std::string strMe = strApplicationPath + "/me";
    const Json events = Json::array({event("presence", strMe + "/presence", "updated")});
    return text(batch(strApplicationPath, nAck, Json::array({sender("me", strMe, events)})));
}

std::string nextOnlyBody(const std::string& strNextPoll) {
    return text(Json{{"_links", Json{{"next", link(strNextPoll)}}}});
}

std::string resyncBody(const std::string& strExpectedPoll) {
    return text(Json{{"_links", Json{{"resync", link(strExpectedPoll)}}}});
}

std::string unauthorizedPage() {
    return "<!DOCTYPE html>\n<html><head><title>401 - Unauthorized</title></head>\n"
           "<body><h1>401 - Unauthorized: The credentials were not accepted.</h1></body></html>\n";
}

std::string notFoundPage() {
    return "<!DOCTYPE html>\n<html><head><title>404 - Not found</title></head>\n"
           "<body><h1>404 - There is no such resource.</h1></body></html>\n";
}

std::string badRequestBody() {
    return text(Json{{"code", "BadRequest"},
                     {"subcode", "ParameterValidationFailure"},
                     {"message", "The endpoint id is missing."}});
}

std::string goneBody() {
    return text(Json{{"code", "Gone"},
                     {"subcode", "ApplicationNotFound"},
                     {"message", "The application does not exist any more."}});
}

std::string expiredBody() {
    return text(Json{{"code", "Gone"},
                     {"subcode", "InactiveApplicationExpired"},
                     {"message", "The application was not used for too long."}});
}

std::string pollReplacedBody() {
    return text(Json{{"code", "Conflict"},
                     {"subcode", "PGetReplaced"},
                     {"message", "A newer poll of the application has replaced this one."}});
}

} // namespace vellux::simulator
