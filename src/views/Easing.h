#pragma once

namespace tidemark {

// The timing curves of the orb's short effects, as fractions of their duration (0...1 in, 0...1
// out): the usual cubic Bézier ease-out (0, 0, 0.58, 1) and ease-in-out (0.42, 0, 0.58, 1).
double easeOut(double t);
double easeInOut(double t);

// A fresh quote's pulse: a ring leaving the rim, eased out over 0.18 s; 1 once it is over.
inline constexpr double pulseSeconds = 0.18;
double pulseProgress(double elapsed);
// A fresh quote's flash: up over 0.22 s (ease-in-out), held, and from 0.55 s down again over
// 0.2 s (ease-out). 0 before and after.
inline constexpr double flashSeconds = 0.75, flashHeldFrom = 0.22, flashHeldUntil = 0.55;
double flashLevel(double elapsed);

}  // namespace tidemark
