// The log of exchanges: what becomes one entry, what tells why it does not connect, and its text.

#include "app/ConnectionLog.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <thread>

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
TEST(ConnectionLog, KeepsTheLatestOfARow) {
    ConnectionLog log;
    HttpExchange failure = exchange("t-");
    log.add(failure);
    failure.began += std::chrono::hours(1);
    log.add(failure);
    failure.strHost = "other.example";
    log.add(failure);
    ASSERT_EQ(log.entries().size(), 2U);
    EXPECT_EQ(log.entries().front().exchange.began, failure.began);
    EXPECT_EQ(log.entries().front().nCount, 2);
}

// Memory that grows for as long as the program runs; threads that lose each other's entries.
TEST(ConnectionLog, KeepsTheLastHundredOfAllThreads) {
    ConnectionLog log;
    std::vector<std::thread> threads;
    for (const char* strName : {"a+", "b+", "c+", "d+"})
        threads.emplace_back([&log, strName] {
            for (int n = 0; n < 30; ++n)
                log.add(exchange(strName));
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(log.entries().size(), 100U);
    log.add(exchange("z+"));
    EXPECT_EQ(log.entries().size(), 100U);
    EXPECT_EQ(log.entries().back().exchange.strPath, "z");
}

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
    log.add(refused);
    log.add(exchange("p!"));
    const std::string strTime = "1970-01-01 01:00:00 +0100  GET lync.example";
    EXPECT_EQ(log.text(), strTime + "/t  401  12 ms  text/html  asks for Negotiate, NTLM\n" + strTime +
                              "/t  no status  0 ms  certificate not trusted: in curl's words (issuer: "
                              "Example CA)  (2 times)\n" +
                              strTime + "p  no status  0 ms  nothing new\n");
}
