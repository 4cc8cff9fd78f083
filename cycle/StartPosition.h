#pragma once

#include "devices/StepperDriverMotor.h"

#include <cstdint>

namespace tavrelin {

/// Turns the pump at `speed` degrees per second until the flag has passed the home sensor, then
/// brakes it; the start position is the flag's trailing edge. False without a pump, when the pump
/// stood on the flag already, when the flag does not come within 2 s, or when it does not go within
/// the time limit that the speed gives: 1 s for each whole time that the speed goes into 360, 0
/// above, which the first look at the clock exceeds. A flag that has gone must then read high ten
/// times in a row, without limit: while the sensor reads low this never returns, and the pump
/// turns. Says nothing itself.
bool doFindStartPosition(StepperDriverMotor* pump, std::uint32_t speed);

} // namespace tavrelin
