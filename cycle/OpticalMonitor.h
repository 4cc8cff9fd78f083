#pragma once

#include "cycle/StepRequest.h"

namespace tavrelin {

/// The work of the optical monitoring worker: takes a reading every 250 ms, at least one, while
/// 100 ms or more of the step's Duration are left, adds each to the step's samples, and in the end
/// appends a line per reading to the day's log. Goes on reading until the log can be opened. True
/// when the lines were handed to the log; false, having done nothing, without request or converter.
bool MonitorOptics(const StepRequest* request);

} // namespace tavrelin
