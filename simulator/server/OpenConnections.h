// The TLS connections that a server has open, so that it can end them all when it stops.
#pragma once

#include "threads/Mutex.h"

#include <openssl/types.h>

#include <map>

namespace vellux::simulator {

/// Any thread. Must outlive every connection of the context that it watches.
class OpenConnections {
public:
    /// From now on knows each connection of `context`, from its handshake until it is freed. Before the first
    /// one.
    void watch(SSL_CTX* context);

    /// Shuts every connection down, and each later one as it appears: whoever reads or writes it sees its
    /// end.
    void shutDownAll();

private:
    static void onHandshake(const SSL* connection, int nWhere, int nResult);
    static void onFree(void* connection, void* self, CRYPTO_EX_DATA* data, int nIndex, long nArgument,
                       void* argument);
    static int contextIndex();
    static int connectionIndex();

    void opened(SSL* connection);
    void freed(const SSL* connection);

    Mutex m_mutex;
    std::map<const SSL*, int> m_sockets VELLUX_GUARDED_BY(m_mutex); // a connection is freed before its socket
    bool m_bShutDown VELLUX_GUARDED_BY(m_mutex) = false;
};

} // namespace vellux::simulator
