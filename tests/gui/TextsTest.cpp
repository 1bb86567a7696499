// What is said about the following, state by state.
#include "WindowFixture.h"

#include "adapters/qt/FailureText.h"
#include "adapters/qt/FollowingText.h"

#include <QLocale>

#include <regex>

namespace {

using namespace std::chrono_literals;
using vellux::EndReason;
using vellux::FollowingState;
using vellux::HttpFailure;
using vellux::SignInStep;
using Phase = FollowingState::Phase;
using Result = vellux::SignInStatus::Result;

// A state that looks like another; a step, a reason or a choice that is left out; words in manual mode.
TEST(FollowingText, EachStateInWords) {
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    const auto today = std::chrono::system_clock::from_time_t(
        QDateTime(QDate::currentDate(), QTime(14, 3)).toSecsSinceEpoch());
    const auto of = [&](Phase phase, Result result, bool bOnCall = false,
                        SignInStep step = SignInStep::SigningIn, bool bAutomatic = false) {
        return FollowingState{phase,
                              {result, step, today, bAutomatic, "CORP\\pat", "lync.example"},
                              {vellux::ChannelState::NotReached, today},
                              bOnCall,
                              false};
    };
    const auto connecting = [&](SignInStep step, bool bAutomatic) {
        return of(Phase::Connecting, Result::Running, false, step, bAutomatic);
    };
    const auto ended = [](EndReason reason) {
        return FollowingState{Phase::Ended, {}, {vellux::ChannelState::Ended, {}, reason}, false, true};
    };
    const struct {
        FollowingState state;
        vellux::FollowingWording wording;
        const char* pText;
        const char* pShort = nullptr; // else the same without its full stop
    } rows[] = {
        {of(Phase::Manual, Result::None), {}, "", ""},
        {of(Phase::NotConnected, Result::None), {true}, "Not connected."},
        {of(Phase::NotConnected, Result::Failed), {}, "Not connected."},
        {of(Phase::NotConnected, Result::Failed), {true}, "Not connected, trying again."},
        {of(Phase::NotConnected, Result::Refused), {true}, "Not connected."},
        {connecting(SignInStep::SigningIn, false), {}, "Connecting: signing in…", "Connecting"},
        {connecting(SignInStep::FindingService, false), {}, "Connecting: finding the service…", "Connecting"},
        {connecting(SignInStep::Registering, true), {}, "Connecting again: registering…", "Connecting again"},
        {connecting(SignInStep::ReadingPresence, true),
         {true, true},
         "Connecting again since 14:03: reading presence…",
         "Connecting again"},
        {of(Phase::Following, Result::Succeeded), {}, "Following CORP\\pat on lync.example."},
        {of(Phase::Following, Result::Succeeded, true),
         {},
         "Following CORP\\pat on lync.example, on a call."},
        {of(Phase::NotReached, Result::Succeeded), {true}, "Not reached since 14:03, trying again."},
        {ended(EndReason::Unknown), {}, "Following has ended."},
        {ended(EndReason::NoPresenceEvent), {}, "Following has ended: a note or another detail was changed."},
        {ended(EndReason::UnreadableAnswer),
         {true},
         "Following has ended: the server has signed you out. Trying again."},
        {ended(EndReason::PresenceNotRead), {}, "Following has ended: your presence could not be read."},
    };
    for (const auto& row : rows) {
        const QString strText = row.pText;
        EXPECT_EQ(followingText(row.state, row.wording), strText);
        EXPECT_EQ(shortFollowingText(row.state, row.wording.bReconnect),
                  row.pShort != nullptr ? QString(row.pShort) : strText.chopped(1));
    }
    FollowingState earlier = of(Phase::NotReached, Result::Succeeded);
    earlier.channel.since -= 48h;
    EXPECT_TRUE(followingText(earlier, {})
                    .contains(QLocale().toString(QDate::currentDate().addDays(-2), QLocale::ShortFormat)));
}

// A reason that says nothing of the host, or the same as another; a placeholder that stays.
TEST(FailureText, EachFailureHasItsOwnWords) {
    std::set<std::string> texts;
    const auto take = [&](const vellux::HttpExchange& exchange, const char* pPart) {
        const std::string strText = failureText(exchange).toStdString();
        EXPECT_NE(strText.find(pPart), std::string::npos) << strText;
        EXPECT_EQ(strText.find('%'), std::string::npos) << strText;
        EXPECT_TRUE(texts.insert(strText).second) << strText;
    };
    for (int n = 0; n < static_cast<int>(HttpFailure::Cancelled); ++n)
        if (static_cast<HttpFailure>(n) != HttpFailure::Silent) {
            vellux::HttpExchange exchange;
            exchange.strHost = "lync.example:444";
            exchange.error = {"told by the library", static_cast<HttpFailure>(n), ""};
            take(exchange, "lync.example:444");
            exchange.error->strIssuer = "Example CA";
            if (exchange.error->failure == HttpFailure::CertificateUntrusted)
                take(exchange, "of lync.example:444 is not trusted by this computer (issuer: Example CA).");
        }
    const struct {
        int nStatus;
        const char* pType;
        std::vector<std::string> schemes;
        const char* pPart;
    } rows[] = {
        {401, "", {"Negotiate", "NTLM"}, "The server takes no user name and password (Negotiate, NTLM)."},
        {401, "text/html", {"Negotiate", "MSRTCOAUTH"}, "h does not accept the sign-in"},
        {403, "text/html", {}, "not let this user in"},
        {404, "", {}, "no Lync server: h "},
        {407, "", {}, "proxy"},
        {400, "application/json", {}, "h does not accept what it is asked (400)"},
        {503, "text/html", {}, "h has trouble of its own (503)"},
    };
    for (const auto& row : rows) {
        vellux::HttpExchange exchange;
        exchange.strHost = "h";
        exchange.nStatus = row.nStatus;
        exchange.strContentType = row.pType;
        exchange.authenticationSchemes = row.schemes;
        take(exchange, row.pPart);
    }
}

// The reason of an earlier sign-in for this one's; one that is said though all is well, or kept back.
TEST(FailureText, WhyNotIsOfThisSignIn) {
    vellux::ConnectionLog log;
    vellux::HttpExchange refused;
    refused.strHost = "old.example";
    refused.began = std::chrono::system_clock::from_time_t(1000);
    refused.error = {"", HttpFailure::Refused, ""};
    log.add(refused);
    const struct {
        Phase phase;
        Result result;
        int nSince;
        bool bAutomatic;
        const char* pServer;
        const char* pPattern;
    } rows[] = {
        {Phase::NotConnected, Result::Failed, 999, false, "s", "old.example refuses.*"},
        {Phase::NotConnected, Result::Failed, 1001, false, "s", "This address is no Lync server: s .*"},
        {Phase::NotConnected, Result::Failed, 1001, false, "s ", ".*blank at its end."},
        {Phase::NotConnected, Result::Failed, 1001, false, "s t", ".*blank in it."},
        {Phase::NotConnected, Result::Refused, 999, false, "s", "The server refuses the user name.*"},
        {Phase::Connecting, Result::Running, 1001, true, "s", "old.example refuses.*"},
        {Phase::Connecting, Result::Running, 999, false, "s", "old.example refuses.*"},
        {Phase::Connecting, Result::Running, 1001, false, "s", ""},
        {Phase::NotReached, Result::Succeeded, 1, false, "s", "old.example refuses.*"},
        {Phase::Following, Result::Succeeded, 1, false, "s", ""},
        {Phase::Ended, Result::Succeeded, 1, false, "s", ""},
        {Phase::Manual, Result::Failed, 1, false, "s", ""},
    };
    for (const auto& row : rows) {
        const auto since = std::chrono::system_clock::from_time_t(row.nSince);
        const vellux::SignInStatus signIn{row.result, SignInStep::SigningIn, since, row.bAutomatic, "",
                                          row.pServer};
        const std::string strText = whyNotConnected({row.phase, signIn, {}, false, false}, log).toStdString();
        EXPECT_TRUE(std::regex_match(strText, std::regex(row.pPattern))) << strText << row.pPattern;
    }
}

} // namespace
