#pragma once

#include "model/SelfTest.h"

namespace tidemark {

// Builds a real orb content view over a throw-away model and checks, at fixed points, which
// presses the orb takes and which fall through. Throws std::runtime_error with the message of
// the first rule that does not hold; the suite and the temporary folder go in every case.
void runNativeChecks(const SelfTestEnvironment& environment);

}  // namespace tidemark
