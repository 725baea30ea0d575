#include "shell/WindowKind.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace tidemark {

OrbWindowKind orbWindowKind(bool waylandSession, std::string_view desktops) {
  if (!waylandSession) return {};
  // Compositors built on wlroots, as they name themselves.
  constexpr std::string_view wlroots[] = {"sway",    "hyprland", "river",
                                          "wayfire", "labwc",    "wlroots"};
  bool onWlroots = false;
  while (!desktops.empty()) {
    const size_t colon = desktops.find(':');
    std::string name(desktops.substr(0, colon));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    onWlroots = onWlroots || std::ranges::find(wlroots, name) != std::end(wlroots);
    desktops = colon == std::string_view::npos ? std::string_view() : desktops.substr(colon + 1);
  }
  return {!onWlroots, false};
}

}  // namespace tidemark
