#include "server/RawServer.h"

#include <arpa/inet.h>
#include <csignal>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

RawServer::Reply RawServer::answer(const std::string& strBody, const std::string& strStatus,
                                   const std::string& strFields) {
    return {send("HTTP/1.1 " + strStatus + "\r\n" + strFields +
                 "Content-Length: " + std::to_string(strBody.size()) + "\r\n\r\n" + strBody)};
}

// A socket that has been accepted, with or without TLS.
class RawServer::Connection {
public:
    Connection(int nSocket, SSL_CTX* context)
        : m_nSocket(nSocket), m_tls(context == nullptr ? nullptr : SSL_new(context)) {
        if (m_tls != nullptr)
            SSL_set_fd(m_tls, nSocket);
    }
    ~Connection() { SSL_free(m_tls); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool shakeHands() { return m_tls == nullptr || SSL_accept(m_tls) == 1; }
    // As of recv(), but for the errors.
    ssize_t read(char* bytes, std::size_t nSize) {
        return m_tls == nullptr ? recv(m_nSocket, bytes, nSize, 0)
                                : SSL_read(m_tls, bytes, static_cast<int>(nSize));
    }
    bool writeAll(std::string_view strBytes) {
        while (!strBytes.empty()) {
            const ssize_t nSent = m_tls == nullptr
                                      ? ::send(m_nSocket, strBytes.data(), strBytes.size(), MSG_NOSIGNAL)
                                      : SSL_write(m_tls, strBytes.data(), static_cast<int>(strBytes.size()));
            if (nSent <= 0)
                return false;
            strBytes.remove_prefix(static_cast<std::size_t>(nSent));
        }
        return true;
    }
    bool isLeft() const { // the client has closed it
        pollfd socket{m_nSocket, POLLRDHUP, 0};
        return poll(&socket, 1, 0) != 0;
    }
    void reset() { // on Linux a connect() with AF_UNSPEC resets the connection
        sockaddr nowhere{};
        nowhere.sa_family = AF_UNSPEC;
        ::connect(m_nSocket, &nowhere, sizeof nowhere);
    }

private:
    const int m_nSocket;
    SSL* const m_tls;
};

RawServer::RawServer(std::vector<Reply> replies, std::optional<Tls> tls, Answer itsAnswer)
    : m_bTls(tls), m_answer(std::move(itsAnswer)), m_replies(replies.begin(), replies.end()) {
    if (tls)
        present(*tls);
    m_nListener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t nLength = sizeof address;
    if (bind(m_nListener, reinterpret_cast<sockaddr*>(&address), nLength) != 0 ||
        listen(m_nListener, 16) != 0 ||
        getsockname(m_nListener, reinterpret_cast<sockaddr*>(&address), &nLength) != 0)
        std::abort();
    m_nPort = ntohs(address.sin_port);
    m_thread = std::thread([this] { serve(); });
}

RawServer::~RawServer() {
    {
        const std::lock_guard lock(m_mutex);
        m_bStopping = true;
        for (const int nSocket : m_sockets)
            shutdown(nSocket, SHUT_RDWR);
        m_changed.notify_all();
    }
    shutdown(m_nListener, SHUT_RDWR);
    m_thread.join();
    for (std::thread& thread : m_connectionThreads)
        thread.join();
    for (const int nSocket : m_sockets)
        ::close(nSocket);
    ::close(m_nListener);
}

void RawServer::present(const Tls& tls) {
    std::signal(SIGPIPE, SIG_IGN); // OpenSSL writes to sockets that are closed
    const std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
    if (tls.nNewestVersion != 0) {
        SSL_CTX_set_security_level(context.get(), 0);
        SSL_CTX_set_min_proto_version(context.get(), TLS1_VERSION);
        SSL_CTX_set_max_proto_version(context.get(), tls.nNewestVersion);
    }
    if (SSL_CTX_use_certificate(context.get(), tls.identity.certificate.get()) != 1 ||
        SSL_CTX_use_PrivateKey(context.get(), tls.identity.key.get()) != 1)
        std::abort();
    const std::lock_guard lock(m_mutex);
    m_context = context;
}

void RawServer::fallSilent(bool bSilent) {
    const std::lock_guard lock(m_mutex);
    m_bSilent = bSilent;
}

void RawServer::blurt(const std::string& bytes) {
    const std::lock_guard lock(m_mutex);
    m_blurted = bytes;
}

void RawServer::addReply(Reply reply) {
    const std::lock_guard lock(m_mutex);
    m_replies.push_back(std::move(reply));
}

void RawServer::go() {
    const std::lock_guard lock(m_mutex);
    ++m_nGo;
    m_changed.notify_all();
}

std::vector<std::string> RawServer::requests() const {
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

void RawServer::serve() {
    for (;;) {
        const int nSocket = accept4(m_nListener, nullptr, nullptr, SOCK_CLOEXEC);
        if (nSocket < 0)
            return;
        ++m_nConnections;
        const int nOn = 1;
        setsockopt(nSocket, IPPROTO_TCP, TCP_NODELAY, &nOn, sizeof nOn);
        const std::lock_guard lock(m_mutex);
        m_sockets.push_back(nSocket);
        if (m_bStopping)
            return;
        m_connectionThreads.emplace_back([this, nSocket] { serveConnection(nSocket); });
    }
}

void RawServer::serveConnection(int nSocket) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this, bSilent = m_bSilent] { return !bSilent || m_bStopping; });
    const std::string blurted = m_blurted;
    Connection connection(nSocket, blurted.empty() ? m_context.get() : nullptr);
    lock.unlock();
    ++m_nOpen;
    std::string strBuffer;
    std::string strRequest;
    bool bGoesOn = connection.writeAll(blurted) && connection.shakeHands();
    while (bGoesOn && readRequest(connection, strBuffer, strRequest)) {
        bGoesOn = play(connection, replyTo(strRequest));
    }
    shutdown(nSocket, SHUT_RDWR);
    --m_nOpen;
}

RawServer::Reply RawServer::replyTo(const std::string& strRequest) {
    std::unique_lock lock(m_mutex);
    m_requests.push_back(strRequest);
    if (m_replies.empty()) {
        lock.unlock();
        return m_answer(strRequest);
    }
    Reply reply = m_replies.front();
    m_replies.pop_front();
    return reply;
}

// One request: head, and as much body as its Content-Length says.
bool RawServer::readRequest(Connection& connection, std::string& strBuffer, std::string& strRequest) const {
    for (;;) {
        const std::size_t nHead = strBuffer.find("\r\n\r\n");
        if (nHead != std::string::npos) {
            std::size_t nSize = nHead + 4;
            const std::size_t nField = strBuffer.find("Content-Length: ");
            if (nField < nHead)
                nSize += static_cast<std::size_t>(std::atol(strBuffer.c_str() + nField + 16));
            if (strBuffer.size() >= nSize) {
                strRequest = strBuffer.substr(0, nSize);
                strBuffer.erase(0, nSize);
                return true;
            }
        }
        std::array<char, 4096> piece{};
        const ssize_t nRead = connection.read(piece.data(), piece.size());
        if (nRead <= 0)
            return false;
        strBuffer.append(piece.data(), static_cast<std::size_t>(nRead));
    }
}

bool RawServer::play(Connection& connection, const Reply& reply) {
    for (std::size_t nStep = 0; nStep < reply.size(); ++nStep) {
        const Step& step = reply[nStep];
        std::unique_lock lock(m_mutex);
        switch (step.kind) {
        case Step::Kind::Send:
            lock.unlock();
            if (!connection.writeAll(step.bytes))
                return false;
            break;
        case Step::Kind::Pause:
            m_changed.wait_for(lock, std::chrono::milliseconds(250), [this] { return m_bStopping; });
            break;
        case Step::Kind::Wait:
            while (m_nGo == 0 && !m_bStopping && !connection.isLeft())
                m_changed.wait_for(lock, std::chrono::milliseconds(20));
            if (m_nGo == 0)
                return false;
            --m_nGo;
            break;
        case Step::Kind::Close:
            return false;
        case Step::Kind::Reset:
            connection.reset();
            return false;
        case Step::Kind::Again:
            nStep = 0;
            ++m_nRepetitions;
            break;
        }
    }
    return true;
}
