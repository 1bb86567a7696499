#include "server/OpenConnections.h"

#include <openssl/ssl.h>
#include <sys/socket.h>

namespace vellux::simulator {

int OpenConnections::contextIndex() {
    static const int nIndex = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
    return nIndex;
}

int OpenConnections::connectionIndex() {
    static const int nIndex = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, onFree);
    return nIndex;
}

void OpenConnections::watch(SSL_CTX* context) {
    connectionIndex(); // made here, on one thread, before connections ask for it
    SSL_CTX_set_ex_data(context, contextIndex(), this);
    SSL_CTX_set_info_callback(context, onHandshake);
}

void OpenConnections::onHandshake(const SSL* connection, int nWhere, int) {
    if ((nWhere & SSL_CB_HANDSHAKE_START) == 0)
        return;
    void* const self = SSL_CTX_get_ex_data(SSL_get_SSL_CTX(connection), contextIndex());
    static_cast<OpenConnections*>(self)->opened(
        const_cast<SSL*>(connection)); // the API's callback says const
}

// OpenSSL calls this for every connection of the process; only ours carry a pointer.
void OpenConnections::onFree(void* connection, void* self, CRYPTO_EX_DATA*, int, long, void*) {
    if (self != nullptr)
        static_cast<OpenConnections*>(self)->freed(static_cast<const SSL*>(connection));
}

void OpenConnections::opened(SSL* connection) {
    const int nSocket = SSL_get_fd(connection);
    SSL_set_ex_data(connection, connectionIndex(), this);
    ScopedLock lock(m_mutex);
    m_sockets[connection] = nSocket;
    if (m_bShutDown)
        ::shutdown(nSocket, SHUT_RDWR);
}

void OpenConnections::freed(const SSL* connection) {
    ScopedLock lock(m_mutex);
    m_sockets.erase(connection);
}

void OpenConnections::shutDownAll() {
    ScopedLock lock(m_mutex);
    m_bShutDown = true;
    for (const auto& [connection, nSocket] : m_sockets)
        ::shutdown(nSocket, SHUT_RDWR);
}

} // namespace vellux::simulator
