#pragma once

namespace sim {

// Which line and channel of the controller goes where on the board. Kernel line number: port * 32 +
// bit.
inline constexpr unsigned pumpEnableLine = 0 * 32 + 2;     // A2, low: driver chip enabled
inline constexpr unsigned stirrerEnableLine = 1 * 32 + 15; // B15, low: driver chip enabled
inline constexpr unsigned homeSensorLine = 1 * 32 + 18;    // B18, low: the flag is in the sensor

inline constexpr unsigned lampChannel = 0;
inline constexpr unsigned pumpChannel = 1;
inline constexpr unsigned stirrerChannel = 2;
inline constexpr unsigned valveChannel = 3;

/// Duty cycle at which the lamp gives the reference reading.
inline constexpr double lampDuty = 0.3;

} // namespace sim
