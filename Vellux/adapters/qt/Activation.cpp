#include "adapters/qt/Activation.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace vellux {

namespace {

struct Free {
    void operator()(void* pReply) const { std::free(pReply); }
};

xcb_atom_t atom(xcb_connection_t* pConnection, std::string_view strName) {
    const auto cookie =
        xcb_intern_atom(pConnection, 0, static_cast<std::uint16_t>(strName.size()), strName.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(
        xcb_intern_atom_reply(pConnection, cookie, nullptr));
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

// _NET_ACTIVE_WINDOW of the Extended Window Manager Hints, with the time of the user's own action.
void activateOnX11(xcb_connection_t* pConnection, xcb_window_t window, std::uint32_t nTime) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atom(pConnection, "_NET_ACTIVE_WINDOW");
    message.data.data32[0] = 1; // an ordinary application asks
    message.data.data32[1] = nTime;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(pConnection)).data->root;
    xcb_send_event(pConnection, 0, root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(pConnection);
}

} // namespace

void useActivationToken(QWidget& window, const QString& strToken) {
    const auto* const pX11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // A startup id ends in "_TIME" and the X server's time, in ms, of what the user did.
    bool bNumber = false;
    const std::uint32_t nTime = strToken.section(QStringLiteral("_TIME"), -1).toUInt(&bNumber);
    if (pX11 == nullptr || !bNumber)
        return;
    window.show(); // a window manager activates nothing hidden
    activateOnX11(pX11->connection(), static_cast<xcb_window_t>(window.winId()), nTime);
}

} // namespace vellux
