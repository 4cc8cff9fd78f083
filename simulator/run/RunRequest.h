#pragma once

#include "simulator/run/RunOptions.h"

#include <optional>
#include <string>
#include <string_view>

namespace sim {

/// What the launcher tells the preloaded library: one "key=value" line each in one environment
/// variable, with breaks in a value as "\n" and backslashes as "\\".
struct RunRequest {
    std::string program; ///< resolved path of the one program to arm in
    int reportDescriptor = -1;
    int libraryDescriptor = -1; ///< that the library was loaded by; -1: by its own name
    int liveDescriptor = -1;    ///< of a run that is served; else -1
    std::string scenarioFile;   ///< as the user named it; empty: the default scenario
    RunOptions options;         ///< all but the scenario
};

std::string Encode(const RunRequest& request);
/// Nothing when the text is not one that Encode made.
std::optional<RunRequest> DecodeRunRequest(std::string_view text);

} // namespace sim
