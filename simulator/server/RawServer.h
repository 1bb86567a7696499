// An HTTP server on a plain socket, or with TLS over it, that keeps the raw bytes of every request and
// answers byte by byte as scripted.
#pragma once

#include "server/CertificateAuthority.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

class RawServer {
public:
    /// What an answer is made of: bytes to send as one piece, a pause of a quarter of a second, a wait until
    /// the test calls go() or the client leaves, the end of the connection, its reset, or all but the first
    /// step again until the client leaves.
    struct Step {
        enum class Kind { Send, Pause, Wait, Close, Reset, Again } kind;
        std::string bytes;
    };
    using Reply = std::vector<Step>;
    /// Answers a request, on the connection's thread.
    using Answer = std::function<Reply(const std::string& strRequest)>;

    static Step send(std::string bytes) { return {Step::Kind::Send, std::move(bytes)}; }
    static Step pause() { return {Step::Kind::Pause, {}}; }
    static Step waitForGo() { return {Step::Kind::Wait, {}}; }
    static Step close() { return {Step::Kind::Close, {}}; }
    static Step reset() { return {Step::Kind::Reset, {}}; }
    static Step again() { return {Step::Kind::Again, {}}; }
    /// A whole answer with its length.
    static Reply answer(const std::string& strBody, const std::string& strStatus = "200 OK",
                        const std::string& strFields = {});

    /// The server's certificate, and the newest version of TLS that it speaks, 0 for any. Old versions are
    /// spoken although they are not safe.
    struct Tls {
        vellux::simulator::Identity identity;
        int nNewestVersion = 0;
    };

    /// Sends the client elsewhere.
    static Reply redirect(const std::string& strUrl, const std::string& strStatus = "302 Found") {
        return answer("", strStatus, "Location: " + strUrl + "\r\n");
    }

    /// The replies to the requests as they come, whichever connection they come on; afterwards what `answer`
    /// says, else 404.
    explicit RawServer(std::vector<Reply> replies, std::optional<Tls> tls = {}, Answer answer = notFound);
    ~RawServer();

    /// What later connections meet: another certificate or version, silence, or bytes in place of all else,
    /// unless there are none.
    void present(const Tls& tls);
    void fallSilent(bool bSilent);
    void blurt(const std::string& bytes);

    /// "http://127.0.0.1:PORT", or with "https", and "127.0.0.1:PORT".
    std::string origin() const { return (m_bTls ? "https://" : "http://") + host(); }
    std::string host() const { return "127.0.0.1:" + std::to_string(m_nPort); }

    /// One more reply, after those that are left.
    void addReply(Reply reply);
    /// Lets the next Wait step pass.
    void go();
    std::vector<std::string> requests() const;
    int connections() const { return m_nConnections; }
    int openConnections() const { return m_nOpen; }
    /// How often an Again step has begun its answer's other steps again.
    int repetitions() const { return m_nRepetitions; }

private:
    class Connection;

    static Reply notFound(const std::string&) { return answer("", "404 Not Found"); }
    Reply replyTo(const std::string& strRequest);
    void serve();
    void serveConnection(int socket);
    bool readRequest(Connection& connection, std::string& strBuffer, std::string& strRequest) const;
    bool play(Connection& connection, const Reply& reply);

    const bool m_bTls;
    const Answer m_answer;
    std::shared_ptr<SSL_CTX> m_context; // null for a plain server
    bool m_bSilent = false;
    std::string m_blurted;
    int m_nListener = -1;
    int m_nPort = 0;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Reply> m_replies;
    std::vector<std::string> m_requests;
    int m_nGo = 0;
    bool m_bStopping = false;
    std::vector<int> m_sockets;
    std::vector<std::thread> m_connectionThreads;
    std::atomic<int> m_nConnections{0};
    std::atomic<int> m_nOpen{0};
    std::atomic<int> m_nRepetitions{0};
    std::thread m_thread;
};
