#include "day/StepReader.h"

#include "day/UserActions.h"
#include "server/Bodies.h"

#include <limits>
#include <utility>

namespace vellux::simulator {

namespace {

using Json = nlohmann::json;

constexpr std::int64_t kLongest = std::int64_t{24} * 60 * 60 * 1000; // ms
constexpr std::int64_t kMostTimes = 1'000'000;
constexpr std::int64_t kLowestStatus = 200; // what comes before is no final answer
constexpr std::int64_t kHighestStatus = 599;

// ---- Members that several steps have ----------------------------------------------------------------------

bool waitMember(Members& members) {
    return members.optionalFlag("wait").value_or(true);
}

Route routeMember(Members& members) {
    const std::optional<Route> route = routeNamed(members.text("route"));
    if (!route)
        members.complain("route", "there is no such route");
    return route.value_or(Route::Discovery);
}

// A body is given as a text, sent as it is, or as JSON, sent as its text.
std::string bodyText(const Json& body) {
    return body.is_string() ? body.get<std::string>()
                            : body.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Reply replyMembers(Members& members, std::int64_t nStatus) {
    Reply reply;
    reply.nStatus =
        static_cast<int>(members.optionalNumber("status", kLowestStatus, kHighestStatus).value_or(nStatus));
    if (const Json* const pBody = members.optionalValue("body"))
        reply.strBody = bodyText(*pBody);
    return reply;
}

std::string namedMember(Members& members, const char* strName, bool (*isKnown)(std::string_view)) {
    std::string strText = members.text(strName);
    if (!isKnown(strText))
        members.complain(strName, "there is no such control");
    return strText;
}

// ---- One reader per step ----------------------------------------------------------------------------------

Step readConnect(Members& members) {
    return ConnectStep{members.optionalText("user"), members.optionalText("password"), waitMember(members)};
}

Step readDisconnect(Members&) {
    return DisconnectStep{};
}

Step readCheck(Members& members) {
    return BoxStep{namedMember(members, "box", isBox), true};
}

Step readUncheck(Members& members) {
    return BoxStep{namedMember(members, "box", isBox), false};
}

Step readSelect(Members& members) {
    SelectStep step;
    step.strList = namedMember(members, "list", isList);
    const Json* const pEntry = members.value("entry");
    if (pEntry != nullptr && pEntry->is_string())
        step.entry = pEntry->get<std::string>();
    else
        step.entry = members.number("entry", 0, std::numeric_limits<int>::max());
    return step;
}

Step readMode(Members& members) {
    const std::string strMode = members.text("mode");
    if (strMode != "manual" && strMode != "sync")
        members.complain("mode", "must be \"manual\" or \"sync\"");
    return ModeStep{strMode == "manual", waitMember(members)};
}

Step readQuit(Members&) {
    return QuitStep{};
}

Step readPresence(Members& members) {
    return PresenceStep{members.text("availability"), members.optionalText("activity").value_or(""),
                        waitMember(members)};
}

Step readPlug(Members&) {
    return PlugStep{true};
}

Step readUnplug(Members&) {
    return PlugStep{false};
}

Step readBatch(Members& members) {
    members.value("body");
    return BatchStep{replyMembers(members, 200)};
}

Step readEndPoll(Members& members) {
    const std::string strWith = members.text("with");
    if (strWith == "gone")
        return BatchStep{{410, expiredBody()}};
    if (strWith == "replaced")
        return BatchStep{{409, pollReplacedBody()}};
    if (strWith == "resync")
        return BatchStep{{200, resyncBody("{next}")}};
    if (strWith != "timeout")
        members.complain("with", R"(must be "gone", "replaced", "resync" or "timeout")");
    return BatchStep{{200, nextOnlyBody("{next}")}};
}

// What "fail", "unauthorized", "delay" and "cut" have in common.
InterfereStep interfereStep(Members& members) {
    InterfereStep step;
    step.route = routeMember(members);
    step.interference.nTimes = static_cast<int>(members.optionalNumber("times", 1, kMostTimes).value_or(1));
    return step;
}

Step readFail(Members& members) {
    InterfereStep step = interfereStep(members);
    step.interference.reply = replyMembers(members, 500);
    return step;
}

Step readUnauthorized(Members& members) {
    InterfereStep step = interfereStep(members);
    step.interference.reply = Reply{401, unauthorizedPage(), "text/html"};
    return step;
}

Step readDelay(Members& members) {
    InterfereStep step = interfereStep(members);
    step.interference.delay = std::chrono::milliseconds(members.number("milliseconds", 0, kLongest));
    return step;
}

Step readCut(Members& members) {
    InterfereStep step = interfereStep(members);
    const std::string strWhere = members.optionalText("where").value_or("answer");
    if (strWhere != "answer" && strWhere != "body")
        members.complain("where", "must be \"answer\" or \"body\"");
    step.interference.cutOff = strWhere == "body" ? CutOff::InBody : CutOff::BeforeAnswer;
    return step;
}

Step readDrop(Members&) {
    return DropStep{};
}

Step readWait(Members& members) {
    WaitStep step;
    step.strLight = members.optionalText("light");
    step.strFlash = members.optionalText("flash");
    step.strStatus = members.optionalText("status");
    step.strButton = members.optionalText("button");
    step.strAlert = members.optionalText("alert");
    step.bPolling = members.optionalFlag("polling");
    if (members.optionalValue("enabled") != nullptr)
        step.strEnabled = namedMember(members, "enabled", isControl);
    if (const auto nLimit = members.optionalNumber("milliseconds", 0, kLongest))
        step.limit = std::chrono::milliseconds(*nLimit);
    return step;
}

Step readSleep(Members& members) {
    return SleepStep{std::chrono::milliseconds(members.number("milliseconds", 0, kLongest))};
}

struct Row {
    const char* strName;
    Step (*read)(Members& members);
};

constexpr Row kRows[] = {
    {"connect", readConnect}, {"disconnect", readDisconnect},
    {"check", readCheck},     {"uncheck", readUncheck},
    {"select", readSelect},   {"mode", readMode},
    {"quit", readQuit},       {"presence", readPresence},
    {"plug", readPlug},       {"unplug", readUnplug},
    {"batch", readBatch},     {"endPoll", readEndPoll},
    {"fail", readFail},       {"unauthorized", readUnauthorized},
    {"delay", readDelay},     {"cut", readCut},
    {"drop", readDrop},       {"wait", readWait},
    {"sleep", readSleep},
};

const Row* rowNamed(const std::string& strName) {
    for (const Row& row : kRows)
        if (row.strName == strName)
            return &row;
    return nullptr;
}

} // namespace

std::optional<std::string> readStep(const Json& object, std::vector<NamedStep>& steps) {
    Members members(object);
    const std::string strName = members.text("do");
    const Row* const pRow = rowNamed(strName);
    if (pRow == nullptr) {
        members.complain("do", "there is no step \"" + strName + "\"");
        return members.error();
    }
    steps.push_back({strName, pRow->read(members)});
    return members.error();
}

} // namespace vellux::simulator
