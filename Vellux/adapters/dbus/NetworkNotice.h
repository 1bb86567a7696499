// The notice that the network has come back.
#pragma once

#include <functional>
#include <memory>

namespace vellux {

class NetworkListener;

/// Listens to NetworkManager on the system bus for as long as it lives. Main thread.
class NetworkNotice {
public:
    /// `cameBack` is called on the main thread's loop whenever the computer gets a connection, or one that
    /// reaches further than the one before: as often as NetworkManager says so, so that one that flaps calls
    /// each time. Without a system bus or NetworkManager it is never called.
    explicit NetworkNotice(std::function<void()> cameBack);
    ~NetworkNotice();
    NetworkNotice(const NetworkNotice&) = delete;
    NetworkNotice& operator=(const NetworkNotice&) = delete;

private:
    std::unique_ptr<NetworkListener> m_listener;
};

} // namespace vellux
