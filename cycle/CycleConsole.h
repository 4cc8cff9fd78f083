#pragma once

#include <string>

namespace tavrelin {

/// Writes a diagnostic of the measurement cycle to standard output and flushes it, as
/// "MeasurementCycle.cpp, 451, Elements: 3". The line numbers are part of the text and fixed.
void PrintCycleLine(int line, const std::string& text);

/// The same for the outcome of an operation: "MeasurementCycle.cpp, 150, success: 1".
void PrintCycleSuccess(int line, bool success);

} // namespace tavrelin
