#include "app/ConnectionLog.h"

#include <array>
#include <ctime>
#include <utility>

namespace vellux {

namespace {

constexpr int kFirstRefusal = 400; // HTTP status

HttpFailure failureOf(const HttpExchange& exchange) {
    return exchange.error ? exchange.error->failure : HttpFailure::Other;
}

bool wentWrong(const HttpExchange& exchange) {
    return exchange.error || exchange.nStatus >= kFirstRefusal;
}

bool wentWrongLike(const HttpExchange& exchange, const HttpExchange& other) {
    return wentWrong(exchange) && exchange.strMethod == other.strMethod &&
           exchange.strHost == other.strHost && exchange.strPath == other.strPath &&
           exchange.nStatus == other.nStatus && exchange.error.has_value() == other.error.has_value() &&
           failureOf(exchange) == failureOf(other);
}

// In local time, with its offset from UTC.
std::string timeText(std::chrono::system_clock::time_point time) {
    const std::time_t nTime = std::chrono::system_clock::to_time_t(time);
    std::tm local{};
    std::array<char, 40> text{};
    if (localtime_r(&nTime, &local) == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S %z", &local) == 0)
        return "?";
    return text.data();
}

std::string line(const ConnectionLog::Entry& entry) {
    const HttpExchange& exchange = entry.exchange;
    std::string strLine = timeText(exchange.began) + "  " + exchange.strMethod + " " + exchange.strHost +
                          exchange.strPath + "  " +
                          (exchange.nStatus == 0 ? "no status" : std::to_string(exchange.nStatus)) + "  " +
                          std::to_string(exchange.duration.count()) + " ms";
    if (!exchange.strContentType.empty())
        strLine += "  " + exchange.strContentType;
    for (std::size_t n = 0; n < exchange.authenticationSchemes.size(); ++n)
        strLine += (n == 0 ? "  asks for " : ", ") + exchange.authenticationSchemes[n];
    if (isIdlePoll(exchange))
        strLine += "  nothing new";
    else if (const auto& error = exchange.error) {
        strLine += std::string("  ") + nameOf(error->failure) + ": " + error->strDescription;
        if (!error->strIssuer.empty())
            strLine += " (issuer: " + error->strIssuer + ")";
    }
    if (entry.nCount > 1)
        strLine += "  (" + std::to_string(entry.nCount) + " times)";
    return strLine + "\n";
}

} // namespace

void ConnectionLog::add(const HttpExchange& exchange) {
    m_entries.update([&exchange](std::vector<Entry>& entries) {
        if (!entries.empty() && wentWrongLike(exchange, entries.back().exchange)) {
            entries.back() = {exchange, entries.back().nCount + 1};
            return;
        }
        if (entries.size() == kMostEntries)
            entries.erase(entries.begin());
        entries.push_back({exchange});
    });
    m_observers.notify();
}

std::vector<ConnectionLog::Entry> ConnectionLog::entries() const {
    return m_entries.get();
}

// Each request of a sign-in is sent only after those before it have succeeded, with the links that they gave,
// so their paths may be others each time; and it ends with the one that fails. So whatever it was, a failure
// is over as soon as a later request has succeeded. A poll may last for minutes beside the requests: when one
// ends well, or with nothing to tell, this shows only that polls no longer fail. What this program cancelled
// shows nothing.
std::optional<HttpExchange> ConnectionLog::lastFailure() const {
    return m_entries.with([](const std::vector<Entry>& entries) -> std::optional<HttpExchange> {
        bool bPollsWork = false;
        for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
            const HttpExchange& exchange = entry->exchange;
            if (exchange.error && failureOf(exchange) == HttpFailure::Cancelled)
                continue;
            if (wentWrong(exchange) && !isIdlePoll(exchange)) {
                if (exchange.bPoll && bPollsWork)
                    continue;
                return exchange;
            }
            if (!exchange.bPoll)
                return std::nullopt;
            bPollsWork = true;
        }
        return std::nullopt;
    });
}

std::string ConnectionLog::text() const {
    std::string strText;
    for (const Entry& entry : entries())
        strText += line(entry);
    return strText;
}

bool isIdlePoll(const HttpExchange& exchange) {
    return exchange.bPoll && exchange.error && failureOf(exchange) == HttpFailure::Silent;
}

const char* nameOf(HttpFailure failure) {
    switch (failure) {
    case HttpFailure::Other:
        return "failed";
    case HttpFailure::NotSent:
        return "not sent";
    case HttpFailure::NameNotFound:
        return "name not found";
    case HttpFailure::Refused:
        return "refused";
    case HttpFailure::NoAnswer:
        return "no answer";
    case HttpFailure::Silent:
        return "silent";
    case HttpFailure::CertificateUntrusted:
        return "certificate not trusted";
    case HttpFailure::CertificateExpired:
        return "certificate expired or not valid yet";
    case HttpFailure::CertificateOtherName:
        return "certificate for another name";
    case HttpFailure::TlsTooOld:
        return "TLS too old";
    case HttpFailure::TlsFailed:
        return "TLS failed";
    case HttpFailure::Proxy:
        return "proxy";
    case HttpFailure::Reset:
        return "broke off";
    case HttpFailure::TooLarge:
        return "too large";
    case HttpFailure::RedirectRefused:
        return "redirect refused";
    case HttpFailure::Cancelled:
        return "cancelled";
    }
    return "failed";
}

} // namespace vellux
