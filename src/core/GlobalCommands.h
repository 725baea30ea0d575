#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace tidemark {

// The two commands that reach the running app from anywhere: a global key, a desktop's own
// shortcut running the command line, or a second start through the one-instance channel.
enum class GlobalCommand { toggleOrb, toggleMask };

struct GlobalCommandSpec {
  GlobalCommand command;
  int hotKeyId;                   // what the global keys report when it is pressed
  uint32_t keysym;                // the X11 key held with Ctrl+Alt
  std::string_view keys;          // as the user reads them
  std::string_view gnomeBinding;  // the same keys as a GNOME accelerator
  std::string_view gnomeName;     // the GNOME shortcut's name
  std::string_view option;  // the command-line flag without its dashes; also the channel's line
  std::string_view description;  // what it does, for the settings
  std::string_view brief;        // the same in a word, for the tray's tooltip
  std::string_view help;         // the flag's line in --help, after "as <keys> does"
};

inline constexpr std::array<GlobalCommandSpec, 2> globalCommands{{
    {GlobalCommand::toggleOrb, 1, 0x0020 /* XK_space */, "Ctrl+Alt+Space", "<Control><Alt>space",
     "潮汐栏：显示或隐藏灵球", "toggle-orb", "显示或隐藏灵球", "显示/隐藏",
     "Show or hide the running app's orb"},
    {GlobalCommand::toggleMask, 2, 0x006d /* XK_m */, "Ctrl+Alt+M", "<Control><Alt>m",
     "潮汐栏：遮蔽行情数字", "toggle-mask", "遮蔽所有行情数字", "遮蔽",
     "Mask or unmask every figure of the running app"},
}};

constexpr const GlobalCommandSpec& specOf(GlobalCommand command) {
  return globalCommands[static_cast<size_t>(command)];
}

// Both commands' keys in one text: "Ctrl+Alt+Space and Ctrl+Alt+M".
inline std::string bothKeys(std::string_view separator = " and ") {
  return std::string(globalCommands[0].keys) + std::string(separator) +
         std::string(globalCommands[1].keys);
}

}  // namespace tidemark
