#include "server/HttpsListener.h"

#include "server/OpenConnections.h"

#include <httplib.h>

#include <chrono>
#include <thread>
#include <utility>

namespace vellux::simulator {

namespace {

constexpr const char* kLoopback = "127.0.0.1";
constexpr std::size_t kMostConnections = 64;
constexpr time_t kKeepAlive = 60;                // s
constexpr std::size_t kMostRequests = 1'000'000; // of one connection

ServerRequest requestFrom(const httplib::Request& from) {
    ServerRequest request;
    request.strMethod = from.method;
    request.strTarget = from.target;
    if (from.has_header("Authorization"))
        request.strAuthorization = from.get_header_value("Authorization");
    request.strBody = from.body;
    request.nSocket = SSL_get_fd(from.ssl);
    return request;
}

// Half of the body, and then the refusal to go on, upon which the connection is closed.
auto brokenContent(std::string strBody) {
    return [strBody = std::move(strBody)](std::size_t, std::size_t, httplib::DataSink& sink) {
        sink.write(strBody.data(), strBody.size() / 2);
        return false;
    };
}

void send(const Reply& reply, const ServerRequest& request, httplib::Response& to) {
    to.status = reply.nStatus;
    const bool bNothingToHalve = reply.cutOff == CutOff::InBody && reply.strBody.empty();
    if (reply.cutOff == CutOff::BeforeAnswer || bNothingToHalve)
        ::shutdown(request.nSocket, SHUT_RDWR); // what is written from here on goes nowhere
    else if (reply.cutOff == CutOff::InBody)
        to.set_content_provider(reply.strBody.size(), reply.strContentType, brokenContent(reply.strBody));
    else if (!reply.strBody.empty())
        to.set_content(reply.strBody, reply.strContentType);
}

} // namespace

struct HttpsListener::Server {
    explicit Server(const Identity& identity) : https(identity.certificate.get(), identity.key.get()) {}

    OpenConnections connections; // outlives the connections of the next
    httplib::SSLServer https;
    int nPort = -1;
    std::thread thread;
};

HttpsListener::HttpsListener(std::unique_ptr<Server> server) : m_server(std::move(server)) {}

HttpsListener::~HttpsListener() {
    stop();
}

std::unique_ptr<HttpsListener> HttpsListener::start(const Identity& identity, Answer answer) {
    auto server = std::make_unique<Server>(identity);
    httplib::SSLServer& https = server->https;
    if (!https.is_valid())
        return nullptr;
    server->connections.watch(https.ssl_context());
    https.new_task_queue = [] { return new httplib::ThreadPool(kMostConnections); };
    https.set_keep_alive_max_count(kMostRequests);
    https.set_keep_alive_timeout(kKeepAlive);
    https.set_tcp_nodelay(true);
    const auto handler = [answer = std::move(answer)](const httplib::Request& from, httplib::Response& to) {
        const ServerRequest request = requestFrom(from);
        send(answer(request), request, to);
    };
    https.Get(".*", handler);
    https.Post(".*", handler);

    server->nPort = https.bind_to_any_port(kLoopback);
    if (server->nPort <= 0)
        return nullptr;
    server->thread = std::thread([&https] { https.listen_after_bind(); });
    while (!https.is_running()) // a stop before that would be lost
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return std::unique_ptr<HttpsListener>(new HttpsListener(std::move(server)));
}

int HttpsListener::port() const {
    return m_server->nPort;
}

void HttpsListener::stop() {
    if (!m_server->thread.joinable())
        return;
    m_server->https.stop();
    m_server->connections.shutDownAll();
    m_server->thread.join();
}

} // namespace vellux::simulator
