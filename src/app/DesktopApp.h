#pragma once

#include <functional>
#include <string>

#include "app/CommandLine.h"

namespace tidemark {

// Which Qt platform the desktop app should ask for, and what to say about it once. The orb
// positions and stacks itself, which Wayland does not let a client do: in a Wayland session with
// XWayland it runs on X11; without XWayland it says what will not work. A platform the user
// chose is kept.
struct PlatformChoice {
  std::string platform;  // empty: Qt's own choice
  std::string message;   // empty: nothing to say
  bool wayland = false;  // a Wayland session, run through its X server
};
PlatformChoice choosePlatform(const std::function<const char*(const char*)>& environment);

// Whether a display server can be reached (or the offscreen platform was asked for).
bool hasDisplay();

// Qt's own texts (standard buttons, file dialogs) in Chinese, as the rest of the app, whatever the
// locale; installed on the running application. Answers whether Qt's translations were found.
bool loadQtTranslations();

// The desktop app: the orb, the tray item and the auxiliary windows over the user's settings and
// watchlist, until the user quits. Answers the exit status.
int runDesktop(int& argc, char** argv, const CommandLine& line);

// The model checks and then the orb's event-routing checks; works without a display.
int runSelfTest(int& argc, char** argv);

}  // namespace tidemark
