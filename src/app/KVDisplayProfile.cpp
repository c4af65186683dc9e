#include "app/KVDisplayProfile.h"

#include <QGuiApplication>
#include <mutex>
#include <optional>

#ifdef TINTORRA_HAVE_XCB
#include <cstdlib>
#include <cstring>
#include <memory>
#include <xcb/xcb.h>
#endif

namespace tintorra {

namespace {

std::mutex& profileMutex()
{
    static std::mutex mutex;
    return mutex;
}

std::optional<QByteArray>& storedProfile()
{
    static std::optional<QByteArray> profile;
    return profile;
}

QByteArray readRootWindowProfile()
{
#ifdef TINTORRA_HAVE_XCB
    const auto* x11 =
        qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    xcb_connection_t* const connection = x11 ? x11->connection() : nullptr;
    if (!connection)
        return {};
    const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    if (!screen)
        return {};
    constexpr char kAtomName[] = "_ICC_PROFILE";
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
        xcb_intern_atom_reply(
            connection, xcb_intern_atom(connection, 1, std::strlen(kAtomName), kAtomName), nullptr),
        &std::free);
    if (!atom || atom->atom == XCB_ATOM_NONE)
        return {};
    // Profiles are small; 16 MB (in 32-bit units) covers any that a display would carry.
    const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> property(
        xcb_get_property_reply(connection,
                               xcb_get_property(connection, 0, screen->root, atom->atom,
                                                XCB_GET_PROPERTY_TYPE_ANY, 0, 4u << 20),
                               nullptr),
        &std::free);
    if (!property || property->format != 8)
        return {};
    const int length = xcb_get_property_value_length(property.get());
    return QByteArray(static_cast<const char*>(xcb_get_property_value(property.get())), length);
#else
    return {};
#endif
}

} // namespace

QByteArray displayIccProfile()
{
    const std::lock_guard lock(profileMutex());
    if (!storedProfile())
        storedProfile() = readRootWindowProfile();
    return *storedProfile();
}

void setDisplayIccProfile(const QByteArray& profile)
{
    const std::lock_guard lock(profileMutex());
    storedProfile() = profile;
}

} // namespace tintorra
