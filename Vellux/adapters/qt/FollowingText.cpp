#include "adapters/qt/FollowingText.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLocale>

namespace vellux {

namespace {

struct FollowingWords {
    Q_DECLARE_TR_FUNCTIONS(vellux::FollowingText)
public:
    static QString notConnected(const SignInStatus& signIn, bool bReconnect) {
        return bReconnect && signIn.result == SignInStatus::Result::Failed
                   ? tr("Not connected, trying again.")
                   : tr("Not connected.");
    }
    static QString step(SignInStep step) {
        switch (step) {
        case SignInStep::SigningIn:
            return tr("signing in…");
        case SignInStep::FindingService:
            return tr("finding the service…");
        case SignInStep::Registering:
            return tr("registering…");
        case SignInStep::ReadingPresence:
            break;
        }
        return tr("reading presence…");
    }
    static QString connecting(bool bAgain) { return bAgain ? tr("Connecting again") : tr("Connecting"); }
    static QString connectingStep(const SignInStatus& signIn, const QString& strSince) {
        const QString strBegin =
            connecting(signIn.bAutomatic) + (strSince.isEmpty() ? QString() : tr(" since %1").arg(strSince));
        return tr("%1: %2", "connecting, the step").arg(strBegin, step(signIn.step));
    }
    static QString following(const SignInStatus& signIn, bool bOnCall) {
        return (bOnCall ? tr("Following %1 on %2, on a call.") : tr("Following %1 on %2."))
            .arg(QString::fromStdString(signIn.strUser), QString::fromStdString(signIn.strServer));
    }
    static QString notReached(const QString& strSince) {
        return tr("Not reached since %1, trying again.").arg(strSince);
    }
    static QString ended(EndReason reason, bool bReconnect) {
        const QString strEnd = ended(reason);
        return bReconnect ? tr("%1 Trying again.", "behind a sentence").arg(strEnd) : strEnd;
    }

private:
    static QString ended(EndReason reason) {
        switch (reason) {
        case EndReason::NoPresenceEvent:
            return tr("Following has ended: a note or another detail was changed.");
        case EndReason::UnreadableAnswer:
            return tr("Following has ended: the server has signed you out.");
        case EndReason::PresenceNotRead:
            return tr("Following has ended: your presence could not be read.");
        case EndReason::Unknown:
            break;
        }
        return tr("Following has ended.");
    }
};

QString timeText(std::chrono::system_clock::time_point time) {
    const auto since = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch());
    const QDateTime local = QDateTime::fromMSecsSinceEpoch(since.count());
    return local.date() == QDate::currentDate() ? QLocale().toString(local.time(), QLocale::ShortFormat)
                                                : QLocale().toString(local, QLocale::ShortFormat);
}

} // namespace

QString followingText(const FollowingState& state, const FollowingWording& wording) {
    using Phase = FollowingState::Phase;
    switch (state.phase) {
    case Phase::Manual:
        break;
    case Phase::NotConnected:
        return FollowingWords::notConnected(state.signIn, wording.bReconnect);
    case Phase::Connecting:
        return FollowingWords::connectingStep(state.signIn,
                                              wording.bSayingSince ? timeText(state.signIn.since) : "");
    case Phase::Following:
        return FollowingWords::following(state.signIn, state.bOnCall);
    case Phase::NotReached:
        return FollowingWords::notReached(timeText(state.channel.since));
    case Phase::Ended:
        return FollowingWords::ended(state.channel.reason, wording.bReconnect);
    }
    return {};
}

QString shortFollowingText(const FollowingState& state, bool bReconnect) {
    if (state.phase == FollowingState::Phase::Connecting)
        return FollowingWords::connecting(state.signIn.bAutomatic);
    QString strText = followingText(state, {bReconnect});
    if (strText.endsWith('.'))
        strText.chop(1);
    return strText;
}

} // namespace vellux
