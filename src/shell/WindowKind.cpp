#include "shell/WindowKind.h"

#include <algorithm>
#include <cctype>
#include <initializer_list>
#include <string>

namespace tidemark {

namespace {

// Whether one of the colon-separated names is one of `names` (lower case), case aside.
bool namesOneOf(std::string_view desktops, std::initializer_list<std::string_view> names) {
  while (!desktops.empty()) {
    const size_t colon = desktops.find(':');
    std::string name(desktops.substr(0, colon));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (std::ranges::find(names, name) != names.end()) return true;
    desktops = colon == std::string_view::npos ? std::string_view() : desktops.substr(colon + 1);
  }
  return false;
}

}  // namespace

OrbWindowKind orbWindowKind(bool waylandSession, std::string_view desktops) {
  const bool tiling = namesOneOf(desktops, {"sway", "i3", "hyprland", "river"});
  if (!waylandSession) return {.tiling = tiling};
  // Compositors built on wlroots, as they name themselves.
  const bool onWlroots =
      namesOneOf(desktops, {"sway", "hyprland", "river", "wayfire", "labwc", "wlroots"});
  return {!onWlroots, false, !onWlroots, tiling};
}

bool trayLabelsShown(std::string_view desktops) {
  return !namesOneOf(desktops, {"mate"});
}

}  // namespace tidemark
