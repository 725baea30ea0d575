#pragma once

// The X connection the application runs on, and small helpers on it, shared by the window system
// and the global keys.

#include <span>
#include <vector>

#include <xcb/xcb.h>

namespace tidemark::x11 {

// None when the application does not run on X11.
xcb_connection_t* connection();
// The atoms of names, interned together in one round trip to the server; XCB_ATOM_NONE for each
// when the server does not answer.
std::vector<xcb_atom_t> atoms(xcb_connection_t* connection, std::span<const char* const> names);
xcb_window_t rootOf(xcb_connection_t* connection);

}  // namespace tidemark::x11
