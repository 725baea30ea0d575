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

}  // namespace tidemark::metrics
