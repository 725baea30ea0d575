#include "platform/X11Connection.h"

#include <cstdlib>
#include <cstring>

#include <QGuiApplication>

namespace tidemark::x11 {

xcb_connection_t* connection() {
  auto* x11 = qApp ? qApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
  return x11 ? x11->connection() : nullptr;
}

std::vector<xcb_atom_t> atoms(xcb_connection_t* connection, std::span<const char* const> names) {
  std::vector<xcb_intern_atom_cookie_t> cookies;
  cookies.reserve(names.size());
  for (const char* name : names)
    cookies.push_back(
        xcb_intern_atom(connection, 0, static_cast<uint16_t>(std::strlen(name)), name));
  std::vector<xcb_atom_t> values;
  values.reserve(names.size());
  for (const xcb_intern_atom_cookie_t cookie : cookies) {
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection, cookie, nullptr);
    values.push_back(reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE});
    std::free(reply);
  }
  return values;
}

xcb_window_t rootOf(xcb_connection_t* connection) {
  return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

}  // namespace tidemark::x11
