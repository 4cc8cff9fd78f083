#pragma once

#include "simulator/launcher/Options.h"

#include <string>

namespace sim {

/// The command, for a shell, that repeats a run with the scenario bench.toml: all that its bytes
/// depend on.
std::string RepeatingCommand(const LauncherOptions& options);

} // namespace sim
