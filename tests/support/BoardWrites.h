#pragma once

#include "simulator/testing/SimulatedBoard.h"

namespace tavrelin {

/// What was written to lines and channels since the last forget, all in one order and in few words:
/// "gpio export 2", "A2 value 0", "pwmchip0 export 1", "pwm1 period 625000". A write that the
/// kernel refused ends in its errno.
sim::Texts Writes(const sim::SimulatedBoard& board);

/// The same with board time in milliseconds and the thread before each: "1000 2 A2 value 0".
sim::Texts TimedWrites(const sim::SimulatedBoard& board);

/// What TimedWrites tells of one thread, without its number: "1000 A2 value 0".
sim::Texts TimedWritesOfThread(const sim::SimulatedBoard& board, unsigned thread);

} // namespace tavrelin
