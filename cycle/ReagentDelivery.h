#pragma once

#include "cycle/StepRequest.h"

#include <cstdint>

namespace tavrelin {

/// Time in milliseconds for `angle` degrees at `speed` degrees per second, at most `limit`
/// milliseconds; 0 for less than a degree or a speed of 0.
std::uint32_t MoveTime(float angle, std::uint32_t limit, std::uint32_t speed);

/// The work of the reagent delivery worker: turns the pump forward from the angle of the last
/// delivery to the step's MotorAngle, or searches its start position, which then counts as angle 0.
/// The angle is kept for the life of the process and belongs to this worker, of which one runs at a
/// time. True when the pump did what it should.
bool DeliverReagent(const StepRequest* request);

} // namespace tavrelin
