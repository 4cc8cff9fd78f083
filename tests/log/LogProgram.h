#pragma once

#include "tests/support/Command.h"

#include <string>
#include <vector>

namespace tavrelin {

/// tavrelin-log as it ships, run to its end in the zone UTC.
CommandResult RunLog(std::vector<std::string> arguments);

} // namespace tavrelin
