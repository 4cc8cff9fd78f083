#pragma once

#include "simulator/launcher/ChildProcess.h"
#include "simulator/launcher/Options.h"
#include "simulator/run/RunReport.h"

#include <string>

namespace sim {

/// What the end of a run comes to: the launcher's exit status, and one line for standard error that
/// is empty for a run that ended as asked.
struct Outcome {
    ExitStatus status = ExitStatus::AsAsked;
    std::string line;
    std::string word; ///< for the summary: "program ended", "limit reached", "deadlock", ...
};

Outcome Judge(const ChildEnd& end, const RunReport& report, const LauncherOptions& options);

/// The scenario's faults and events that never came, in words; empty when all did.
std::string Missing(const RunReport& report);

/// "key = value" lines that tell how the run went; also valid TOML.
std::string SummaryText(const Outcome& outcome, const RunReport& report);

} // namespace sim
