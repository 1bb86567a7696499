#include "server/PresenceServer.h"

#include "server/HttpsListener.h"
#include "server/PresenceService.h"
#include "threads/Mutex.h"

#include <condition_variable>
#include <utility>

namespace vellux::simulator {

namespace {

Reply notFound() {
    Reply reply;
    reply.nStatus = 404;
    reply.strBody = notFoundPage();
    reply.strContentType = "text/html";
    return reply;
}

// Waits that end early when the server stops.
class Delays {
public:
    void wait(std::chrono::milliseconds delay) {
        const auto end = std::chrono::steady_clock::now() + delay;
        ScopedLock lock(m_mutex);
        while (!m_bStopped && m_changed.wait_until(m_mutex, end) == std::cv_status::no_timeout) {
        }
    }

    void stop() {
        ScopedLock lock(m_mutex);
        m_bStopped = true;
        m_changed.notify_all();
    }

private:
    Mutex m_mutex;
    std::condition_variable_any m_changed;
    bool m_bStopped VELLUX_GUARDED_BY(m_mutex) = false;
};

} // namespace

struct PresenceServer::Parts {
    Parts(PresenceServerOptions options, PresenceServerObserver* itsObserver)
        : service(std::move(options), itsObserver), observer(itsObserver) {}

    Reply answer(const ServerRequest& request);

    PresenceService service;
    PresenceServerObserver* const observer;
    Interferences interferences;
    Delays delays;
    std::unique_ptr<HttpsListener> listener; // first to go: its threads use the rest
};

Reply PresenceServer::Parts::answer(const ServerRequest& request) {
    if (observer != nullptr)
        observer->requestArrived(request.strMethod, request.strTarget);
    const std::optional<Destination> destination = destinationOf(request.strMethod, request.strTarget);
    if (!destination)
        return notFound();
    const std::optional<Interference> interference = interferences.take(destination->route);
    if (!interference)
        return service.answer(*destination, request);
    if (interference->delay.count() > 0)
        delays.wait(interference->delay);
    if (interference->cutOff == CutOff::BeforeAnswer)
        return Reply::cut(); // without the effects that an answer has
    Reply reply = interference->reply ? *interference->reply : service.answer(*destination, request);
    if (reply.cutOff == CutOff::Never)
        reply.cutOff = interference->cutOff;
    return reply;
}

PresenceServer::PresenceServer(std::unique_ptr<Parts> parts) : m_parts(std::move(parts)) {}

PresenceServer::~PresenceServer() {
    stop();
}

std::unique_ptr<PresenceServer> PresenceServer::start(const CertificateAuthority& authority,
                                                      PresenceServerOptions options,
                                                      PresenceServerObserver* observer) {
    const std::optional<Identity> identity = authority.issueServerIdentity();
    if (!identity)
        return nullptr;
    auto parts = std::make_unique<Parts>(std::move(options), observer);
    parts->listener = HttpsListener::start(
        *identity, [&all = *parts](const ServerRequest& request) { return all.answer(request); });
    if (parts->listener == nullptr)
        return nullptr;
    return std::unique_ptr<PresenceServer>(new PresenceServer(std::move(parts)));
}

std::string PresenceServer::host() const {
    return "127.0.0.1:" + std::to_string(port());
}

int PresenceServer::port() const {
    return m_parts->listener->port();
}

void PresenceServer::stop() {
    m_parts->delays.stop();
    m_parts->service.closeChannels();
    m_parts->listener->stop();
}

void PresenceServer::setPresence(const std::string& strAvailability, const std::string& strActivity) {
    m_parts->service.setPresence({strAvailability, strActivity});
}

void PresenceServer::emitBatch(Reply batch) {
    if (const auto channel = m_parts->service.currentChannel())
        channel->emit(std::move(batch));
}

void PresenceServer::interfere(Route route, Interference interference) {
    m_parts->interferences.add(route, std::move(interference));
}

void PresenceServer::cutHeldPolls() {
    m_parts->service.cutHeldPolls();
}

bool PresenceServer::isPolling() const {
    const auto channel = m_parts->service.currentChannel();
    return channel != nullptr && channel->isHeld();
}

std::string PresenceServer::applicationPath() const {
    return m_parts->service.currentPath();
}

std::string PresenceServer::nextPollPath() const {
    const auto channel = m_parts->service.currentChannel();
    return channel == nullptr ? "" : channel->hrefAfterNextBatch();
}

} // namespace vellux::simulator
