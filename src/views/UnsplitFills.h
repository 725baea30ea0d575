#pragma once

#include <functional>

namespace tidemark {

// Runs `paint` where Qt's raster engine fills its spans in one go. Qt 6.4 cuts every fill of more
// than 96 spans (an antialiased ring has hundreds) into pieces for its global thread pool and
// waits for them; on a thread of that pool it fills them itself. Handed over once, whole, a ring
// costs about a third of the CPU of one stroked where it stands. `paint` only draws, while the
// calling thread waits for it; it must not draw text, whose font caches are per thread.
void paintUnsplit(const std::function<void()>& paint);

}  // namespace tidemark
