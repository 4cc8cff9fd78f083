#pragma once

#include "simulator/kernel/Kernel.h"
#include "simulator/run/RunReport.h"

namespace sim {

/// What the process holds at this moment, when threads that have ended are gone: they still hold
/// memory. A figure that /proc does not tell is 0.
Footprint FootprintNow(const Kernel& kernel);

} // namespace sim
