#pragma once

#include <QMargins>

namespace tidemark::metrics {

// A settings section's page: its margins and the space between its cards.
inline constexpr QMargins pageMargins{28, 24, 28, 24};
inline constexpr int pageSpacing = 16;
// A window of its own (the watchlist manager, the detail) sits a little tighter.
inline constexpr QMargins windowMargins{20, 20, 20, 20};
// A scrolling list keeps room on its right for the scroll bar.
inline constexpr QMargins listMargins{0, 0, 10, 0};

// The orb's motion: how often it draws a frame while springing back from a drag, while an effect
// (flash, pulse, ripple) runs and while it only breathes, in milliseconds; the glide of a thrown
// orb; how long a ripple and a hint last; how often the pointer is looked for off the orb.
inline constexpr int springFrameMs = 16, effectFrameMs = 50, idleFrameMs = 250;
inline constexpr int glideFrameMs = 1000 / 60;
inline constexpr double rippleSeconds = 1.15;
inline constexpr double hintSeconds = 2.4;
inline constexpr int pointerPollMs = 80;

}  // namespace tidemark::metrics
