#pragma once

#include <string_view>

namespace tidemark {

// How the orb's window lives with the desktop it runs on.
//
// In an X11 session it bypasses the window manager (override-redirect): it is then on every
// desktop, and no manager stacks it below a window or pushes a dragged orb back onto the screen;
// the X server sends clicks outside its input shape to the window below.
//
// Under a Wayland desktop's X server the compositor routes the pointer to the whole window and
// ignores its input shape (KWin, wlroots; mutter drops it whenever new pixels reach it), so the
// window is kept to the orb itself. KWin gives an override-redirect window no keyboard focus and
// mutter follows input shapes only for managed ones: there the window is managed. wlroots
// desktops re-centre a managed floating window and ignore its moves: there it bypasses them.
// wlroots gives the window it does not manage the keyboard only until the click that took it
// ends: focus lost there says nothing of where the user went. Tiling desktops (sway, i3) would
// squeeze the resizable settings window into a tile below its minimum size, and float dialogs at
// their own size: there it is a dialog.
struct OrbWindowKind {
  bool managed = false;
  bool inputShapeHonoured = true;
  bool focusKept = true;
  bool tiling = false;
  friend bool operator==(const OrbWindowKind&, const OrbWindowKind&) = default;
};

// `desktops` is $XDG_CURRENT_DESKTOP: names separated by colons, such as "ubuntu:GNOME".
OrbWindowKind orbWindowKind(bool waylandSession, std::string_view desktops);

// Whether the tray may show text beside its icon: MATE's notification area would show the text
// instead of the icon, and nothing at all while there is none (masked, or the icon alone chosen).
bool trayLabelsShown(std::string_view desktops);

}  // namespace tidemark
