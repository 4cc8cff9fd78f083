#pragma once

#include "simulator/kernel/Faults.h"
#include "simulator/scenario/TomlTable.h"

#include <string>

namespace sim {

/// Reads one [[fault]] table.
void ReadFault(TomlTable& table, std::vector<Fault>& faults);

/// The calls that a fault can be set on, separated by ", ".
std::string FaultCallNames();

} // namespace sim
