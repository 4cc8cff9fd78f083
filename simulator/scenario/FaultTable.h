#pragma once

#include "simulator/scenario/Scenario.h"
#include "simulator/scenario/TomlTable.h"

#include <string>

namespace sim {

/// Reads one [[fault]] table.
void ReadFault(TomlTable& table, Scenario& scenario);

/// The calls that a fault can be set on, separated by ", ".
std::string FaultCallNames();

} // namespace sim
