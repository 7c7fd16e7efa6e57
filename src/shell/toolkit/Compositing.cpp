// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/Compositing.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace ostrelle {

namespace {

struct Free {
    void operator()(void* reply) const { std::free(reply); }
};

template <typename Reply>
using OwnedReply = std::unique_ptr<Reply, Free>;

} // namespace

/// A compositor owns the selection _NET_WM_CM_Sn of its screen (Extended Window Manager Hints, 1.5).
bool isCompositing() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr || x11->connection() == nullptr) {
        return true; // Wayland composites, and off-screen nobody looks
    }
    constexpr std::string_view selection = "_NET_WM_CM_S0";
    xcb_connection_t* connection = x11->connection();
    const OwnedReply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, selection.size(), selection.data()), nullptr));
    if (!atom) {
        return false;
    }
    const OwnedReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace ostrelle
