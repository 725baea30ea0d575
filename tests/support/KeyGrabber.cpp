// Another program that holds Ctrl+Alt+M: grabs it on the root window, with and without CapsLock
// and NumLock, prints "grabbed" and then "pressed" for every press it gets, until it is ended.

#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>

#include <cstdio>
#include <cstdlib>
#include <initializer_list>

int main() {
  xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
  if (xcb_connection_has_error(connection)) return 1;
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
  xcb_keycode_t* codes = xcb_key_symbols_get_keycode(xcb_key_symbols_alloc(connection), 0x006d);
  if (!codes) return 1;  // no key for XK_m
  for (int locks :
       {0, int(XCB_MOD_MASK_LOCK), int(XCB_MOD_MASK_2), int(XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2)})
    if (xcb_request_check(
            connection,
            xcb_grab_key_checked(connection, 1, root, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | locks,
                                 codes[0], XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)))
      return 2;
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // each line as it comes, into a log file
  std::puts("grabbed");
  while (xcb_generic_event_t* event = xcb_wait_for_event(connection)) {
    if ((event->response_type & ~0x80) == XCB_KEY_PRESS) std::puts("pressed");
    std::free(event);
  }
}
