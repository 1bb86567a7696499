// The log of exchanges: what becomes one entry, what tells why it does not connect, and its text.

#include "app/ConnectionLog.h"
#include "support/Text.h"

#include <gtest/gtest.h>

using vellux::ConnectionLog;
using vellux::HttpExchange;
using vellux::HttpFailure;

namespace {

/// "PATH" and how it ended: "+" well, "-" reset, "!" silent, "x" cancelled, "4" with a 401, "5" with a 500. A
/// path that begins with "p" is a poll's.
HttpExchange exchange(const std::string& strText) {
    HttpExchange made;
    made.strMethod = "GET";
    made.strHost = "lync.example";
    made.strPath = strText.substr(0, strText.size() - 1);
    made.bPoll = strText.starts_with("p");
    switch (strText.back()) {
    case '-':
        made.error = {"reset", HttpFailure::Reset};
        break;
    case '!':
        made.error = {"time-out", HttpFailure::Silent};
        break;
    case 'x':
        made.error = {"cancelled", HttpFailure::Cancelled};
        break;
    default:
        made.nStatus = strText.back() == '4' ? 401 : strText.back() == '5' ? 500 : 200;
    }
    return made;
}

} // namespace

// A log that is full of the same; a reason that is long over, or that is hidden by what says nothing of it.
TEST(ConnectionLog, MergesEqualFailuresAndKnowsWhyItDoesNotConnect) {
    const struct {
        const char* strExchanges;
        const char* strEntries; // path and count
        const char* strReason;  // path; "" for none
    } rows[] = {
        {"t- t- t-", "t3", "t"},       {"t- t4 t4 t-", "t1 t2 t1", "t"}, {"t4 t5", "t1 t1", "t"},
        {"t+ t+", "t1 t1", ""},        {"t+ u4 u4", "t1 u2", "u"},       {"t- u- t-", "t1 u1 t1", "t"},
        {"u- t+", "u1 t1", ""},        // another sign-in has come as far
        {"u- tx", "u1 t1", "u"},       // or not
        {"t+ a4 p+", "t1 a1 p1", "a"}, // the poll was there before
        {"p- p- p+", "p2 p1", ""},     {"p- p- p!", "p2 p1", ""},        {"p! p! p-", "p2 p1", "p"},
        {"p- t+", "p1 t1", ""},        {"a- p- p!", "a1 p1 p1", "a"},    {"t!", "t1", "t"},
        {"p! p!", "p2", ""},
    };
    for (const auto& row : rows) {
        ConnectionLog log;
        std::size_t nTold = 0;
        const auto observation = log.observe([&nTold] { ++nTold; });
        const auto exchanges = vellux::split(row.strExchanges, " ");
        for (const std::string& strExchange : exchanges)
            log.add(exchange(strExchange));
        std::string strEntries;
        for (const ConnectionLog::Entry& entry : log.entries())
            strEntries +=
                (strEntries.empty() ? "" : " ") + entry.exchange.strPath + std::to_string(entry.nCount);
        EXPECT_EQ(strEntries, row.strEntries) << row.strExchanges;
        const auto reason = log.lastFailure();
        EXPECT_EQ(reason ? reason->strPath : "", row.strReason) << row.strExchanges;
        EXPECT_EQ(nTold, exchanges.size());
    }
}

// Merging failures of different hosts, or keeping the first time of a row.
TEST(ConnectionLog, IsPlainText) {
    setenv("TZ", "UTC-1", 1);
    ConnectionLog log;
    EXPECT_EQ(log.text(), "");
    HttpExchange page = exchange("/t4");
    page.duration = std::chrono::milliseconds(12);
    page.strContentType = "text/html";
    page.authenticationSchemes = {"Negotiate", "NTLM"};
    log.add(page);
    HttpExchange refused = exchange("/t-");
    refused.error = {"in curl's words", HttpFailure::CertificateUntrusted, "Example CA"};
    log.add(refused);
    refused.began += std::chrono::minutes(1);
    log.add(refused);
    HttpExchange silent = exchange("p!");
    log.add(silent);
    silent.strHost = "other.example";
    log.add(silent);
    EXPECT_EQ(
        log.text(),
        "1970-01-01 01:00:00 +0100  GET lync.example/t  401  12 ms  text/html  asks for Negotiate, NTLM\n"
        "1970-01-01 01:01:00 +0100  GET lync.example/t  no status  0 ms  certificate not trusted: "
        "in curl's words (issuer: Example CA)  (2 times)\n"
        "1970-01-01 01:00:00 +0100  GET lync.examplep  no status  0 ms  nothing new\n"
        "1970-01-01 01:00:00 +0100  GET other.examplep  no status  0 ms  nothing new\n");
}
