#pragma once

#include <array>

namespace sim {

// Which line and channel of the controller goes where on the board. Kernel line number: port * 32 +
// bit.
inline constexpr unsigned kPumpEnableLine = 0 * 32 + 2;    // A2, low: driver chip enabled
inline constexpr unsigned kPumpDirectionLine = 0 * 32 + 3; // A3
inline constexpr std::array<unsigned, 3> kPumpCurrentLines{0 * 32 + 4, 0 * 32 + 5, 0 * 32 + 6};
inline constexpr unsigned kStirrerEnableLine = 1 * 32 + 15; // B15, low: driver chip enabled
inline constexpr unsigned kHomeSensorLine = 1 * 32 + 18;    // B18, low: the flag is in the sensor

/// Channel-select bits 0 to 2 of the analog multiplexer: C27, C28, C31.
inline constexpr std::array<unsigned, 3> kMultiplexerLines{2 * 32 + 27, 2 * 32 + 28, 2 * 32 + 31};
/// The indicator's lines 1 to 6: D16, D18, D20, D17, D19, D21. Line 2 is the analog switch as well:
/// high passes the lower eight signals on.
inline constexpr std::array<unsigned, 6> kIndicatorLines{3 * 32 + 16, 3 * 32 + 18, 3 * 32 + 20,
                                                         3 * 32 + 17, 3 * 32 + 19, 3 * 32 + 21};
inline constexpr unsigned kAnalogSwitchLine = kIndicatorLines[1];

inline constexpr unsigned kLampChannel = 0;
inline constexpr unsigned kPumpChannel = 1;
inline constexpr unsigned kStirrerChannel = 2;
inline constexpr unsigned kValveChannel = 3;

/// Duty cycle at which the lamp gives the reference reading.
inline constexpr double kLampDuty = 0.3;

} // namespace sim
