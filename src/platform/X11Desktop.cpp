// The window-system seams on X11 (through xcb), and quiet stand-ins elsewhere.

#include <xcb/shape.h>
#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>
#include <xcb/xinput.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>
#include <QGuiApplication>

#include "shell/DesktopSeams.h"

namespace tidemark {
namespace {

xcb_connection_t* x11Connection() {
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

class QuietWindowSystem final : public WindowSystem {
 public:
  void setInputRegion(QWidget&, const QRegion&) override {}
  void showOnAllDesktops(QWidget&) override {}
  bool canExcludeFromCapture() const override { return false; }
  void setExcludedFromCapture(QWidget&, bool) override {}
  void watchPointerPresses(std::function<void(unsigned long)>) override {}
};

class X11WindowSystem final : public WindowSystem, public QAbstractNativeEventFilter {
 public:
  explicit X11WindowSystem(xcb_connection_t* connection) : connection_(connection) {}
  ~X11WindowSystem() override {
    if (inputOpcode_) QCoreApplication::instance()->removeNativeEventFilter(this);
  }

  // Raw button events of the X input extension reach every client that asks for them on the
  // root window, whichever window the press goes to; a grab would take the press away.
  void watchPointerPresses(std::function<void(unsigned long)> pressed) override {
    const xcb_query_extension_reply_t* input = xcb_get_extension_data(connection_, &xcb_input_id);
    if (!input || !input->present) return;
    pressed_ = std::move(pressed);
    inputOpcode_ = input->major_opcode;
    struct {
      xcb_input_event_mask_t head;
      uint32_t bits;
    } mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS};
    xcb_input_xi_select_events(connection_,
                               xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root, 1,
                               &mask.head);
    xcb_flush(connection_);
    QCoreApplication::instance()->installNativeEventFilter(this);
  }

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr*) override {
    if (type != "xcb_generic_event_t") return false;
    auto* event = static_cast<xcb_generic_event_t*>(message);
    if ((event->response_type & ~0x80) != XCB_GE_GENERIC) return false;
    auto* generic = reinterpret_cast<xcb_ge_generic_event_t*>(event);
    if (generic->extension != inputOpcode_ || generic->event_type != XCB_INPUT_RAW_BUTTON_PRESS)
      return false;
    // Left and right only: the wheel's steps are buttons 4 to 7.
    const auto* press = reinterpret_cast<xcb_input_raw_button_press_event_t*>(event);
    if ((press->detail == 1 || press->detail == 3) && pressed_) pressed_(press->time);
    return true;
  }

  void setInputRegion(QWidget& window, const QRegion& region) override {
    std::vector<xcb_rectangle_t> rectangles;
    const qreal ratio = window.devicePixelRatioF();
    for (const QRect& r : region) {
      // The X window is in device pixels.
      rectangles.push_back({static_cast<int16_t>(std::lround(r.x() * ratio)),
                            static_cast<int16_t>(std::lround(r.y() * ratio)),
                            static_cast<uint16_t>(std::lround(r.width() * ratio)),
                            static_cast<uint16_t>(std::lround(r.height() * ratio))});
    }
    xcb_shape_rectangles(connection_, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT,
                         XCB_CLIP_ORDERING_UNSORTED, static_cast<xcb_window_t>(window.winId()), 0,
                         0, static_cast<uint32_t>(rectangles.size()), rectangles.data());
    xcb_flush(connection_);
  }

  void showOnAllDesktops(QWidget& window) override {
    // Qt sets neither property. Window managers differ in which one they honour, so both.
    const auto id = static_cast<xcb_window_t>(window.winId());
    const uint32_t everyDesktop = 0xFFFFFFFF;
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, id,
                        atom(connection_, "_NET_WM_DESKTOP"), XCB_ATOM_CARDINAL, 32, 1,
                        &everyDesktop);
    const std::array<xcb_atom_t, 2> states{atom(connection_, "_NET_WM_STATE_STICKY"),
                                           atom(connection_, "_NET_WM_STATE_ABOVE")};
    xcb_change_property(connection_, XCB_PROP_MODE_APPEND, id, atom(connection_, "_NET_WM_STATE"),
                        XCB_ATOM_ATOM, 32, static_cast<uint32_t>(states.size()), states.data());
    xcb_flush(connection_);
  }

  // X11 lets every client read every pixel: there is nothing to ask for.
  bool canExcludeFromCapture() const override { return false; }
  void setExcludedFromCapture(QWidget&, bool) override {}

 private:
  xcb_connection_t* connection_;
  uint8_t inputOpcode_ = 0;
  std::function<void(unsigned long)> pressed_;
};

class QuietHotKeys final : public GlobalHotKeys {
 public:
  int install(std::function<void(int)>) override { return 0; }
  bool holds(int) const override { return false; }
  bool canHold() const override { return false; }
  bool retry() override { return false; }
};

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
      {{1, 0x0020}, {2, 0x006d}}};  // XK_space, XK_m
  static constexpr std::array<uint16_t, 4> lockVariants{0, XCB_MOD_MASK_LOCK, XCB_MOD_MASK_2,
                                                        XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2};

  xcb_window_t rootWindow() const {
    return xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
  }

  bool grab(int id, xcb_keysym_t keysym) {
    xcb_keycode_t* codes = xcb_key_symbols_get_keycode(symbols_, keysym);
    if (!codes || codes[0] == XCB_NO_SYMBOL) {
      std::free(codes);
      return false;
    }
    const xcb_keycode_t keycode = codes[0];
    std::free(codes);
    bool ok = true;
    for (uint16_t locks : lockVariants) {
      // Another program holding the key answers BadAccess: the key stays unavailable.
      auto cookie = xcb_grab_key_checked(connection_, 1, rootWindow(), modifiers | locks, keycode,
                                         XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
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

std::unique_ptr<WindowSystem> makeWindowSystem() {
  if (xcb_connection_t* connection = x11Connection())
    return std::make_unique<X11WindowSystem>(connection);
  return std::make_unique<QuietWindowSystem>();
}

std::unique_ptr<GlobalHotKeys> makeGlobalHotKeys() {
  if (xcb_connection_t* connection = x11Connection())
    return std::make_unique<X11HotKeys>(connection);
  return std::make_unique<QuietHotKeys>();
}

}  // namespace tidemark
