#include "platform/X11Connection.h"

#include <cstdlib>
#include <cstring>

#include <QGuiApplication>

namespace tidemark::x11 {

xcb_connection_t* connection() {
  auto* x11 = qApp ? qApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
  return x11 ? x11->connection() : nullptr;
}

xcb_atom_t atom(xcb_connection_t* connection, const char* name) {
  auto cookie = xcb_intern_atom(connection, 0, static_cast<uint16_t>(std::strlen(name)), name);
  xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection, cookie, nullptr);
  const xcb_atom_t value = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
  std::free(reply);
  return value;
}

xcb_window_t rootOf(xcb_connection_t* connection) {
  return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

}  // namespace tidemark::x11
