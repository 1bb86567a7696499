// A real transport whose time limits are a test's own.
#pragma once

#include "ports/HttpTransport.h"
#include "ports/Platform.h"
#include "threads/Shared.h"

#include <atomic>
#include <memory>
#include <string>

/// Shortens the time limit of the requests to one path, and gives all others as long as a busy machine may
/// need.
class Hurry : public vellux::HttpTransport {
public:
    explicit Hurry(vellux::HttpTransport& transport) : m_transport(transport) {}

    vellux::Shared<std::string> strPath{"none"};
    /// How many more requests to that path have all the time they need.
    mutable std::atomic<int> nUnhurried{0};

    vellux::HttpResponse sendSynchronousRequest(const vellux::HttpRequest& request) override {
        return m_transport.sendSynchronousRequest(hurried(request));
    }
    std::shared_ptr<vellux::HttpConnection>
    createConnection(const vellux::HttpRequest& request, vellux::HttpConnectionDelegate& delegate) override {
        vellux::assertMainThread();
        return m_transport.createConnection(hurried(request), delegate);
    }

    void close() override { m_transport.close(); }

private:
    vellux::HttpRequest hurried(vellux::HttpRequest request) const {
        const bool bHurried = request.strUrl.find(strPath.get()) != std::string::npos && nUnhurried-- <= 0;
        request.timeout = bHurried ? std::chrono::milliseconds(600) : std::chrono::minutes(10);
        return request;
    }
    vellux::HttpTransport& m_transport;
};
