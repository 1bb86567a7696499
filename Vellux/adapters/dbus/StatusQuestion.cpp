#include "adapters/dbus/StatusQuestion.h"

#include "adapters/dbus/Buses.h"
#include "adapters/dbus/InstanceLock.h"
#include "adapters/dbus/InstanceName.h"

#include <QDeadlineTimer>

namespace vellux {

namespace {
constexpr qint64 kLongestQuestionMs = 2000;
constexpr qint64 kEarlyMs = kLongestQuestionMs / 10; // coarse timers fire up to 5 % early
} // namespace

StatusAnswer askStatus() {
    const QDeadlineTimer deadline(kLongestQuestionMs);
    // The socket first: it is there without a bus, too.
    using Kind = HolderAnswer::Kind;
    HolderAnswer answer;
    do {
        answer = tellHolder(QString::fromLatin1(kStatusQuestion), deadline);
    } while (answer.kind == Kind::Dropped && !deadline.hasExpired());
    if (answer.kind == Kind::Answered)
        return {answer.strLine};
    if (answer.kind != Kind::Nobody)
        return {std::nullopt, /*bSilent=*/true};
    const std::optional<QDBusConnection> bus = sessionBus();
    if (!bus)
        return {};
    if (const std::optional<ProgramStatus> status = askNameOwner(*bus, deadline))
        return {QString::fromStdString(statusLine(*status))};
    return {std::nullopt, /*bSilent=*/deadline.remainingTime() < kEarlyMs};
}

} // namespace vellux
