#pragma once

// The X connection the application runs on, and small helpers on it, shared by the window system
// and the global keys.

#include <xcb/xcb.h>

namespace tidemark::x11 {

// None when the application does not run on X11.
xcb_connection_t* connection();
// The atom of a name, interned; XCB_ATOM_NONE when the server does not answer.
xcb_atom_t atom(xcb_connection_t* connection, const char* name);
xcb_window_t rootOf(xcb_connection_t* connection);

}  // namespace tidemark::x11
