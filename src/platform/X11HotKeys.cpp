// The two global keys on X11, through xcb.

#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>

#include <array>
#include <cstdlib>
#include <vector>

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>

#include "core/GlobalCommands.h"
#include "platform/QuietDesktop.h"
#include "platform/X11Connection.h"
#include "seams/DesktopSeams.h"

namespace tidemark {
namespace {

using x11::rootOf;

// Grabs Ctrl+Alt+<key> on the root window with every combination of CapsLock and NumLock, which
// X reports as part of the modifier state, and matches presses in a native event filter.
class X11HotKeys final : public GlobalHotKeys, public QAbstractNativeEventFilter {
 public:
  explicit X11HotKeys(xcb_connection_t* connection) : connection_(connection) {}
  ~X11HotKeys() override {
    QCoreApplication::instance()->removeNativeEventFilter(this);
    const xcb_window_t root = rootWindow();
    for (const Grab& grab : grabs_)
      for (uint16_t locks : lockVariants)
        xcb_ungrab_key(connection_, grab.keycode, root, modifiers | locks);
    xcb_flush(connection_);
    if (symbols_) xcb_key_symbols_free(symbols_);
  }

  int install(std::function<void(int)> pressed) override {
    pressed_ = std::move(pressed);
    symbols_ = xcb_key_symbols_alloc(connection_);
    QCoreApplication::instance()->installNativeEventFilter(this);
    retry();
    return static_cast<int>(grabs_.size());
  }

  bool holds(int id) const override {
    return std::any_of(grabs_.begin(), grabs_.end(), [id](const Grab& g) { return g.id == id; });
  }
  bool canHold() const override { return true; }

  bool retry() override {
    bool more = false;
    for (const auto& [id, keysym] : wanted)
      if (!holds(id)) more = grab(id, keysym) || more;
    return more;
  }

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr*) override {
    if (type != "xcb_generic_event_t") return false;
    auto* event = static_cast<xcb_generic_event_t*>(message);
    if ((event->response_type & ~0x80) != XCB_KEY_PRESS) return false;
    auto* key = reinterpret_cast<xcb_key_press_event_t*>(event);
    const uint16_t state = key->state & ~(XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2);
    for (const Grab& grab : grabs_) {
      if (grab.keycode == key->detail && state == modifiers) {
        if (pressed_) pressed_(grab.id);
        return true;
      }
    }
    return false;
  }

 private:
  struct Grab {
    int id;
    xcb_keycode_t keycode;
  };
  static constexpr uint16_t modifiers = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1;  // Ctrl+Alt
  static constexpr std::array<std::pair<int, xcb_keysym_t>, 2> wanted{
      {{globalCommands[0].hotKeyId, globalCommands[0].keysym},
       {globalCommands[1].hotKeyId, globalCommands[1].keysym}}};
  static constexpr std::array<uint16_t, 4> lockVariants{0, XCB_MOD_MASK_LOCK, XCB_MOD_MASK_2,
                                                        XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2};

  xcb_window_t rootWindow() const { return rootOf(connection_); }

  bool grab(int id, xcb_keysym_t keysym) {
    xcb_keycode_t* codes = xcb_key_symbols_get_keycode(symbols_, keysym);
    if (!codes || codes[0] == XCB_NO_SYMBOL) {
      std::free(codes);
      return false;
    }
    const xcb_keycode_t keycode = codes[0];
    std::free(codes);
    // The four grabs go out together and their answers come back in one round trip.
    std::array<xcb_void_cookie_t, lockVariants.size()> cookies{};
    for (size_t i = 0; i < lockVariants.size(); ++i)
      cookies[i] = xcb_grab_key_checked(connection_, 1, rootWindow(), modifiers | lockVariants[i],
                                        keycode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    bool ok = true;
    for (const xcb_void_cookie_t cookie : cookies) {
      // Another program holding the key answers BadAccess: the key stays unavailable.
      if (xcb_generic_error_t* error = xcb_request_check(connection_, cookie)) {
        std::free(error);
        ok = false;
      }
    }
    if (!ok) {
      for (uint16_t locks : lockVariants)
        xcb_ungrab_key(connection_, keycode, rootWindow(), modifiers | locks);
      return false;
    }
    grabs_.push_back({id, keycode});
    return true;
  }

  xcb_connection_t* connection_;
  xcb_key_symbols_t* symbols_ = nullptr;
  std::vector<Grab> grabs_;
  std::function<void(int)> pressed_;
};

}  // namespace

std::unique_ptr<GlobalHotKeys> makeGlobalHotKeys(bool grab) {
  if (xcb_connection_t* connection = grab ? x11::connection() : nullptr)
    return std::make_unique<X11HotKeys>(connection);
  return std::make_unique<QuietHotKeys>();
}

}  // namespace tidemark
