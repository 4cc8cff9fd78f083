#pragma once

#include "simulator/kernel/Faults.h"
#include "simulator/scenario/TomlTable.h"

#include <string>

namespace sim {

/// Reads one [[fault]] table.
void ReadFault(TomlTable& table, std::vector<Fault>& faults);

/// Reads the one of "at", "at_step" and "at_measurement" that is there; "at" stays where none is.
void ReadMoment(TomlTable& table, Nanoseconds& at, Occasion& occasion);
/// Reads the call of an event's "on" table.
void ReadCallOfEvent(TomlTable& table, Occasion& occasion);

/// The calls that a fault can be set on, separated by ", ".
std::string FaultCallNames();

} // namespace sim
