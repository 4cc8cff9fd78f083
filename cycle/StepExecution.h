#pragma once

#include "cycle/MeasurementState.h"

#include <cstdint>
#include <string>

namespace tavrelin {

class MeasurementCycle;

/// Slots of a step's success flags; a true flag says that the slot's worker ran or was not needed,
/// whatever came of its work. Nothing of its own stands behind kReservedSlot.
inline constexpr std::uint32_t kStirringSlot = 0;
inline constexpr std::uint32_t kReagentSlot = 1;
inline constexpr std::uint32_t kLedSlot = 2;
inline constexpr std::uint32_t kMonitoringSlot = 3;
inline constexpr std::uint32_t kReservedSlot = 4;
inline constexpr std::uint32_t kValveSlot = 5;
inline constexpr std::uint32_t kStepResults = 6;

/// Executes one step: starts a worker per actuator involved, joins them all and, for the three
/// optical measurements, stores the average of the samples in the cycle. Lasts as long as its
/// slowest worker.
///
/// `results` has room for kStepResults flags whatever `resultCount` says, and is cleared by the
/// caller; or it is null, with a count of 0. At which counts a slot is written does not follow from
/// its number:
///                      true when not needed   after the worker's join
///     kStirringSlot    any count              count > 0
///     kReagentSlot     any count              count > 1, when the join succeeded
///     kLedSlot         never                  count > 2
///     kMonitoringSlot  count > 2              count > 2
///     kReservedSlot    count > 3              never
///     kValveSlot       never                  count > 5
/// A slot whose worker did not start is not written. Monitoring counts as not needed also when the
/// worker to start before it, stirring or else valve, did not.
///
/// Answers the success of the last of the joins of stirring, valve, LED and reagent delivery, that
/// of the LED being a failure at counts up to 2; without any, whether the last worker of valve,
/// stirring and monitoring started.
bool doStepRequest(MeasurementCycle& cycle, const MeasurementState& state, bool* results,
                   std::uint32_t resultCount);

/// The same with the row's fields one by one.
bool doStepRequest(MeasurementCycle& cycle, float motorAngle, std::uint32_t motorSpeed,
                   bool findStartPosition, std::uint32_t duration, bool ledStatus,
                   bool stirringStatus, bool srvdStatus, bool adcMonitorStatus, bool valveStatus,
                   std::string description, bool* results, std::uint32_t resultCount);

} // namespace tavrelin
