#pragma once

#include "cycle/MeasurementCycle.h"
#include "cycle/StateTable.h"

namespace tavrelin {

/// Concentration of the last finished measurement, shown in every status line; 0 before the first.
/// Used by the main thread only.
extern float lastChlorineConcentration;

/// Runs the table's current step and moves the table on: announces the step, executes it and, after
/// the last one, computes, logs and announces the measurement's result. Does nothing when either is
/// null. A hardware failure is reported and ends the process with status 0, the devices as they
/// are.
void RunCycleStep(StateTable* table, MeasurementCycle* cycle);

} // namespace tavrelin
