#pragma once

#include "simulator/board/Nanoseconds.h"

#include <string_view>

namespace sim {

/// What a call of this name costs in board time when I/O is not free: round figures in the order of
/// what a 400 MHz ARM core and a slow card need, set by hand, not measured on an instrument.
Nanoseconds CallCost(std::string_view call);

} // namespace sim
