#pragma once

#include <QImage>

#include "core/QuoteStyle.h"
#include "views/OrbPalette.h"

namespace tidemark {

// What of a quote the icon shows: equal faces draw the same pixels, so the icon is drawn and
// published again only when its face changes.
struct MiniOrbFace {
  bool bareDot = false;
  int sweep = 180;  // degrees, in steps of 15
  Color arc;
  friend bool operator==(const MiniOrbFace&, const MiniOrbFace&) = default;
};
MiniOrbFace miniOrbFace(const QuoteSnapshot* quote, bool bareDot, RiseColors colors);
// The tray icon: a small orb whose arc shows where the price stands in the day's range, to the
// nearest twenty-fourth, in the quote's colour. Masked, or at the quietest density, only the centre
// dot remains. `side` is in logical pixels; the image has the given device pixel ratio.
QImage miniOrb(const MiniOrbFace& face, const OrbPalette& palette, double devicePixelRatio,
               double side = 23);

}  // namespace tidemark
