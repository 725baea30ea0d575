#pragma once

#include <memory>

#include "core/ChangeSignal.h"
#include "core/Date.h"
#include "core/Scheduler.h"
#include "model/DemoMarket.h"
#include "model/LiveQuoteLoad.h"

namespace tidemark {

// The refresh cycle's own state: the heartbeat, the debounced load about to start, when the last
// refresh and rotation began, the demonstration market and the live load under way.
struct RefreshCycle {
  // A live source is asked this often while no watched market is awake.
  static constexpr double quietInterval = 300;
  static constexpr double debounce = 0.18;
  static constexpr double rotationPeriod = 7;

  // The heartbeat keeps a half-second beat but wakes only at the beats where one of its rules
  // can act: it sleeps from one such beat to the next, and a change of what the rules go by
  // brings the next wake-up forward.
  TimerHandle heartbeat;
  bool beating = false;  // the heartbeat runs on the scheduler's timers
  Date lastBeat;
  Date nextBeat;  // the next wake-up
  ChangeSignal::Subscription changes, clockJumps;
  TimerHandle pending;
  Date lastStartedAt;
  Date lastRotationAt;
  // The live data shown came while no watched market was awake: it counts as current until the
  // next quiet refresh is due, also in the moment a market wakes.
  bool quietData = false;
  MockMarket mock;
  // The live load whose answers still count; an older one's answers are dropped.
  std::shared_ptr<LiveQuoteLoad> live;

  // Whether a period begun at `since` is over at `now`. A clock set back (a time change) would
  // hold the period for as long as it went back: it counts as over, once, and restarts then.
  static bool over(Date since, Date now, double period) {
    const double elapsed = now - since;
    return elapsed >= period || elapsed < 0;
  }
};

}  // namespace tidemark
