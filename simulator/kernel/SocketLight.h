// A light at one end of a socket pair, whose other end stands in for the open node. Packets keep reports
// apart.
#pragma once

#include "adapters/hidraw/HidrawListing.h"

#include <array>
#include <cstdlib>
#include <sys/socket.h>
#include <unistd.h>

class SocketLight {
public:
    using Bytes = std::vector<std::uint8_t>;

    SocketLight() {
        if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, m_ends.data()) != 0)
            std::abort();
    }
    ~SocketLight() { unplug(); }
    SocketLight(const SocketLight&) = delete;
    SocketLight& operator=(const SocketLight&) = delete;

    /// Whoever takes it closes it.
    vellux::HidrawNode node() const { return {m_ends[0], 0}; }

    /// The reports that have come since the last call.
    std::vector<Bytes> reports() const {
        std::vector<Bytes> reports;
        for (Bytes report(1000);;) {
            const ssize_t nBytes = ::recv(m_ends[1], report.data(), report.size(), MSG_DONTWAIT);
            if (nBytes <= 0)
                return reports;
            reports.emplace_back(report.begin(), report.begin() + nBytes);
        }
    }
    /// Drops reports as they come, until the node has been closed; how many there were.
    int waitUntilClosed() const {
        int nReports = 0;
        for (char byAny = 0; ::recv(m_ends[1], &byAny, 1, 0) > 0;)
            ++nReports;
        return nReports;
    }
    void unplug() {
        if (m_ends[1] >= 0)
            ::close(m_ends[1]);
        m_ends[1] = -1;
    }

private:
    std::array<int, 2> m_ends{-1, -1}; // the node, the light
};
