// A presence server in memory, behind the HTTP port.
#pragma once

#include "fakes/Journal.h"
#include "ports/HttpTransport.h"
#include "ports/Platform.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>

/// The request as one journal line: "METHOD URL | Name: value | ... | timeout | body".
inline std::string requestLine(const vellux::HttpRequest& request) {
    std::string strLine = request.strMethod + " " + request.strUrl;
    for (const auto& [strName, strValue] : request.headerFields)
        strLine += " | " + strName + ": " + strValue;
    strLine += " | " + std::to_string(request.timeout / std::chrono::seconds(1)) + " s";
    if (request.strBody)
        strLine += " | " + *request.strBody;
    return strLine;
}

class FakeConnection : public vellux::HttpConnection {
public:
    FakeConnection(Journal& journal, vellux::HttpRequest request, vellux::HttpConnectionDelegate& delegate)
        : m_journal(journal), m_request(std::move(request)), m_delegate(delegate) {}

    void start() override {
        if (!std::exchange(m_bStarted, true))
            m_journal.add("poll " + requestLine(m_request));
    }
    void cancel() override {
        if (!std::exchange(m_bCancelled, true))
            m_journal.add("cancel " + m_request.strUrl);
    }

    // What the server does. Main thread. A cancelled connection calls nobody.
    void simulateResponse() {
        vellux::assertMainThread();
        if (!m_bCancelled)
            m_delegate.connectionDidReceiveResponse(*this);
    }
    void simulateData(const std::string& strBody) {
        vellux::assertMainThread();
        if (!m_bCancelled)
            m_delegate.connectionDidReceiveData(*this, strBody);
    }
    /// The answer is complete.
    void simulateEnd() {
        vellux::assertMainThread();
        if (!m_bCancelled)
            m_delegate.connectionDidFinishLoading(*this);
    }
    void simulateFailure(vellux::HttpFailure failure = vellux::HttpFailure::Silent) {
        vellux::assertMainThread();
        if (!m_bCancelled)
            m_delegate.connectionDidFailWithError(*this, {"timed out", failure});
    }
    bool isCancelled() const { return m_bCancelled; }

private:
    Journal& m_journal;
    vellux::HttpRequest m_request;
    vellux::HttpConnectionDelegate& m_delegate;
    bool m_bStarted = false;
    bool m_bCancelled = false;
};

/// Synchronous requests are journalled as "request ...", long polls as "poll ..." and "cancel ...".
class FakeHttpTransport : public vellux::HttpTransport {
public:
    explicit FakeHttpTransport(Journal& journal) : m_journal(journal) {}

    // ---- what tests do ----

    static vellux::HttpResponse body(std::string strBody) { return {std::move(strBody), std::nullopt}; }
    static vellux::HttpResponse failure() { return {std::nullopt, vellux::HttpError{"no route to host"}}; }

    /// The next answers of a path (the URL's part from the first "/" after the host on, "" for none), in
    /// order; the last one stays for all further requests. A path without an answer fails.
    void script(const std::string& strPath, std::vector<vellux::HttpResponse> answers) {
        const std::lock_guard lock(m_mutex);
        m_answers[strPath] = {answers.begin(), answers.end()};
    }
    void script(const std::string& strPath, const std::string& strBody) { script(strPath, {body(strBody)}); }

    /// Called on the requesting thread before each synchronous answer, for instance to hold it.
    std::function<void(const vellux::HttpRequest&)> onRequest;

    /// All long polls that were opened, oldest first. Main thread.
    const std::vector<std::shared_ptr<FakeConnection>>& polls() const { return m_polls; }
    FakeConnection& lastPoll() { return *m_polls.back(); }

    // ---- the port ----

    vellux::HttpResponse sendSynchronousRequest(const vellux::HttpRequest& request) override {
        m_journal.add("request " + requestLine(request));
        if (onRequest)
            onRequest(request);
        const std::lock_guard lock(m_mutex);
        const auto found = m_answers.find(pathOf(request.strUrl));
        if (found == m_answers.end() || found->second.empty())
            return failure();
        vellux::HttpResponse answer = found->second.front();
        if (found->second.size() > 1)
            found->second.pop_front();
        return answer;
    }
    void close() override { m_journal.add("transport close"); }
    std::shared_ptr<vellux::HttpConnection>
    createConnection(const vellux::HttpRequest& request, vellux::HttpConnectionDelegate& delegate) override {
        m_polls.push_back(std::make_shared<FakeConnection>(m_journal, request, delegate));
        return m_polls.back();
    }

private:
    static std::string pathOf(const std::string& strUrl) {
        const std::size_t nHost = strUrl.find("//");
        const std::size_t nPath = nHost == std::string::npos ? nHost : strUrl.find('/', nHost + 2);
        return nPath == std::string::npos ? "" : strUrl.substr(nPath);
    }

    Journal& m_journal;
    std::mutex m_mutex;
    std::map<std::string, std::deque<vellux::HttpResponse>> m_answers;
    std::vector<std::shared_ptr<FakeConnection>> m_polls;
};
