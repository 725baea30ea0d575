// The window system on X11, through xcb: input and visible regions, compositing, pointer presses
// and the orb window's hints.

#include <xcb/shape.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>
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

#include "platform/QuietDesktop.h"
#include "platform/X11Connection.h"
#include "seams/DesktopSeams.h"

namespace tidemark {
namespace {

using x11::rootOf;

// The atoms the window system names, interned together when it is made. A compositing manager
// owns _NET_WM_CM_S0 (Qt talks to the display's default screen; Xvfb and Xwayland have only
// screen 0); the states are those the orb's window adds to its own.
constexpr std::array<const char*, 7> atomNames{
    "_NET_WM_CM_S0",           "_NET_WM_DESKTOP",     "_NET_WM_STATE",
    "_NET_WM_STATE_STICKY",    "_NET_WM_STATE_ABOVE", "_NET_WM_STATE_SKIP_TASKBAR",
    "_NET_WM_STATE_SKIP_PAGER"};
enum AtomName : size_t { compositorSelection, wmDesktop, wmState, firstOrbState };

std::vector<xcb_rectangle_t> deviceRectangles(QWidget& window, const QRegion& region) {
  std::vector<xcb_rectangle_t> rectangles;
  const qreal ratio = window.devicePixelRatioF();
  for (const QRect& r : region) {
    // The X window is in device pixels.
    rectangles.push_back({static_cast<int16_t>(std::lround(r.x() * ratio)),
                          static_cast<int16_t>(std::lround(r.y() * ratio)),
                          static_cast<uint16_t>(std::lround(r.width() * ratio)),
                          static_cast<uint16_t>(std::lround(r.height() * ratio))});
  }
  return rectangles;
}

class X11WindowSystem final : public WindowSystem, public QAbstractNativeEventFilter {
 public:
  explicit X11WindowSystem(xcb_connection_t* connection) : connection_(connection) {
    const auto cookie = xcb_query_extension(connection, 8, "XWAYLAND");
    atoms_ = x11::atoms(connection, atomNames);
    xcb_query_extension_reply_t* reply = xcb_query_extension_reply(connection, cookie, nullptr);
    xwayland_ = reply && reply->present;
    std::free(reply);
    QCoreApplication::instance()->installNativeEventFilter(this);
  }
  ~X11WindowSystem() override { QCoreApplication::instance()->removeNativeEventFilter(this); }

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
    xcb_input_xi_select_events(connection_, rootOf(connection_), 1, &mask.head);
    xcb_flush(connection_);
  }

  // A compositing manager owns the _NET_WM_CM_S0 selection; XFixes reports every change of owner.
  bool compositing() const override {
    auto cookie = xcb_get_selection_owner(connection_, atoms_[compositorSelection]);
    xcb_get_selection_owner_reply_t* reply =
        xcb_get_selection_owner_reply(connection_, cookie, nullptr);
    const bool owned = reply && reply->owner != XCB_NONE;
    std::free(reply);
    return owned;
  }

  void watchCompositing(std::function<void(bool)> changed) override {
    const xcb_query_extension_reply_t* fixes = xcb_get_extension_data(connection_, &xcb_xfixes_id);
    if (!fixes || !fixes->present) return;
    std::free(xcb_xfixes_query_version_reply(connection_,
                                             xcb_xfixes_query_version(connection_, 1, 0), nullptr));
    compositingChanged_ = std::move(changed);
    fixesEvent_ = fixes->first_event;
    xcb_xfixes_select_selection_input(connection_, rootOf(connection_), atoms_[compositorSelection],
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    xcb_flush(connection_);
  }

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr*) override {
    if (type != "xcb_generic_event_t") return false;
    auto* event = static_cast<xcb_generic_event_t*>(message);
    const uint8_t kind = event->response_type & ~0x80;
    if (compositingChanged_ && kind == fixesEvent_ + XCB_XFIXES_SELECTION_NOTIFY) {
      const auto* notify = reinterpret_cast<xcb_xfixes_selection_notify_event_t*>(event);
      if (notify->selection == atoms_[compositorSelection])
        compositingChanged_(notify->owner != XCB_NONE);
      return false;  // Qt follows the compositor too
    }
    if (kind != XCB_GE_GENERIC || !inputOpcode_) return false;
    auto* generic = reinterpret_cast<xcb_ge_generic_event_t*>(event);
    if (generic->extension != inputOpcode_ || generic->event_type != XCB_INPUT_RAW_BUTTON_PRESS)
      return false;
    // Left and right only: the wheel's steps are buttons 4 to 7.
    const auto* press = reinterpret_cast<xcb_input_raw_button_press_event_t*>(event);
    if ((press->detail == 1 || press->detail == 3) && pressed_) pressed_(press->time);
    return true;
  }

  void setInputRegion(QWidget& window, const QRegion& region) override {
    // mutter takes an input shape without rectangles for no shape at all, the whole window: under
    // Xwayland one point in the top left corner, which shows nothing, stands for none.
    if (region.isEmpty() && xwayland_)
      return setShape(window, XCB_SHAPE_SK_INPUT, QRect(0, 0, 1, 1));
    setShape(window, XCB_SHAPE_SK_INPUT, region);
  }

  void setVisibleRegion(QWidget& window, const std::optional<QRegion>& region) override {
    if (region) return setShape(window, XCB_SHAPE_SK_BOUNDING, *region);
    xcb_shape_mask(connection_, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING,
                   static_cast<xcb_window_t>(window.winId()), 0, 0, XCB_NONE);
    xcb_flush(connection_);
  }

  void prepareOrbWindow(QWidget& window) override {
    const auto id = static_cast<xcb_window_t>(window.winId());
    // Qt keeps a window's pixels at its top left when it is resized. Pixels that stay where they
    // are on the screen let the window grow or shrink round the orb in one request without a
    // frame of shifted pixels. (A background pixel would clear the new parts too, but mutter then
    // takes the window's input region as the whole window.)
    const uint32_t staticGravity = XCB_GRAVITY_STATIC;
    xcb_change_window_attributes(connection_, id, XCB_CW_BIT_GRAVITY, &staticGravity);
    // Qt sets neither property. Window managers differ in which one they honour, so both.
    const uint32_t everyDesktop = 0xFFFFFFFF;
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, id, atoms_[wmDesktop],
                        XCB_ATOM_CARDINAL, 32, 1, &everyDesktop);
    // Added to those the window has (Qt keeps them when it maps the window), each once.
    const xcb_atom_t property = atoms_[wmState];
    std::vector<xcb_atom_t> states;
    const auto cookie = xcb_get_property(connection_, 0, id, property, XCB_ATOM_ATOM, 0, 64);
    if (xcb_get_property_reply_t* reply = xcb_get_property_reply(connection_, cookie, nullptr)) {
      const auto* held = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply));
      if (reply->format == 32) states.assign(held, held + xcb_get_property_value_length(reply) / 4);
      std::free(reply);
    }
    for (size_t i = firstOrbState; i < atoms_.size(); ++i)
      if (std::ranges::count(states, atoms_[i]) == 0) states.push_back(atoms_[i]);
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, id, property, XCB_ATOM_ATOM, 32,
                        static_cast<uint32_t>(states.size()), states.data());
    xcb_flush(connection_);
  }

  void orbWindowShown(QWidget& window) override {
    const auto id = static_cast<xcb_window_t>(window.winId());
    xcb_delete_property(connection_, id, XCB_ATOM_WM_TRANSIENT_FOR);
    // A mapped window's desktop is changed by asking the window manager (source 1: an
    // application).
    xcb_client_message_event_t ask{};
    ask.response_type = XCB_CLIENT_MESSAGE;
    ask.format = 32;
    ask.window = id;
    ask.type = atoms_[wmDesktop];
    ask.data.data32[0] = 0xFFFFFFFF;
    ask.data.data32[1] = 1;
    xcb_send_event(connection_, 0, rootOf(connection_),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&ask));
    xcb_flush(connection_);
  }

  // X11 lets every client read every pixel: there is nothing to ask for.
  bool canExcludeFromCapture() const override { return false; }
  void setExcludedFromCapture(QWidget&, bool) override {}

 private:
  void setShape(QWidget& window, xcb_shape_kind_t kind, const QRegion& region) {
    const std::vector<xcb_rectangle_t> rectangles = deviceRectangles(window, region);
    xcb_shape_rectangles(connection_, XCB_SHAPE_SO_SET, kind, XCB_CLIP_ORDERING_UNSORTED,
                         static_cast<xcb_window_t>(window.winId()), 0, 0,
                         static_cast<uint32_t>(rectangles.size()), rectangles.data());
    xcb_flush(connection_);
  }

  xcb_connection_t* connection_;
  std::vector<xcb_atom_t> atoms_;
  uint8_t inputOpcode_ = 0;
  uint8_t fixesEvent_ = 0;
  bool xwayland_ = false;
  std::function<void(unsigned long)> pressed_;
  std::function<void(bool)> compositingChanged_;
};

}  // namespace

std::unique_ptr<WindowSystem> makeWindowSystem() {
  if (xcb_connection_t* connection = x11::connection())
    return std::make_unique<X11WindowSystem>(connection);
  return std::make_unique<QuietWindowSystem>();
}

}  // namespace tidemark
