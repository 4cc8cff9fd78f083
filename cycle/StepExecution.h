#pragma once

#include <cstdint>
#include <string>

namespace tavrelin {

class MeasurementCycle;

/// Slots of a step's success flags; a true flag says that the slot's worker ran or was not needed.
/// Nothing of its own stands behind kReservedSlot.
inline constexpr std::uint32_t kStirringSlot = 0;
inline constexpr std::uint32_t kReagentSlot = 1;
inline constexpr std::uint32_t kLedSlot = 2;
inline constexpr std::uint32_t kMonitoringSlot = 3;
inline constexpr std::uint32_t kReservedSlot = 4;
inline constexpr std::uint32_t kValveSlot = 5;
inline constexpr std::uint32_t kStepResults = 6;

/// Executes one step: starts a worker per actuator involved, joins them all and, for the three
/// optical measurements, stores the average of the samples in the cycle. Lasts as long as its
/// slowest worker. `results` has room for kStepResults flags, cleared by the caller; flags are only
/// ever set by what happened, as far as `resultCount` covers them. Both may be null and 0 together.
/// Answers the success of the last join that counts.
bool doStepRequest(MeasurementCycle& cycle, float motorAngle, std::uint32_t motorSpeed,
                   bool findStartPosition, std::uint32_t duration, bool ledStatus,
                   bool stirringStatus, bool srvdStatus, bool adcMonitorStatus, bool valveStatus,
                   std::string description, bool* results, std::uint32_t resultCount);

} // namespace tavrelin
