#include "ui/KVCapsLock.h"

#ifdef TINTORRA_HAVE_XCB
#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>
#endif

namespace tintorra {

bool capsLockIsOn()
{
#ifdef TINTORRA_HAVE_XCB
    const auto* x11 =
        qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    xcb_connection_t* const connection = x11 ? x11->connection() : nullptr;
    if (!connection) {
        return false;
    }
    const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    if (!screen) {
        return false;
    }
    // The pointer query answers with the state of the modifier keys, the lock among them.
    const std::unique_ptr<xcb_query_pointer_reply_t, decltype(&std::free)> reply(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, screen->root), nullptr),
        &std::free);
    return reply && (reply->mask & XCB_MOD_MASK_LOCK) != 0;
#else
    return false;
#endif
}

} // namespace tintorra
