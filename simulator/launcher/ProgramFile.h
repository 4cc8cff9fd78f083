#pragma once

#include <string>

namespace sim {

/// The program to run, looked up as a shell does: a name without a slash stands for one in PATH.
struct ProgramFile {
    std::string path;    ///< resolved; empty when it cannot be run
    std::string problem; ///< why it cannot be run, or not on the simulated board
};

/// A static program, a script, one for another machine or loader, or one that raises its rights
/// ignores a preloaded library in silence and would touch this machine's own devices: it is told
/// apart here, before it runs.
ProgramFile FindProgram(const std::string& name);

} // namespace sim
