#include "cycle/CycleConsole.h"

#include "base/Console.h"

namespace tavrelin {

void PrintCycleLine(int line, const std::string& text) {
    PrintLineAndFlush("MeasurementCycle.cpp, " + std::to_string(line) + ", " + text);
}

void PrintCycleSuccess(int line, bool success) {
    PrintCycleLine(line, std::string("success: ") + (success ? "1" : "0"));
}

} // namespace tavrelin
