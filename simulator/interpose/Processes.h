#pragma once

#include "simulator/run/Simulation.h"

#include <functional>
#include <sys/types.h>

namespace sim {

/// Forks the program's process, by some means, off the board: the child, or a negated errno. In the
/// child the board is out of reach.
long ForkOnBoard(Simulation& simulation, const std::function<pid_t()>& fork);

/// Ends the run where the program is in a folder of the board's: what it starts would work in
/// another one, of this machine.
void RefuseToolsOnBoard(Simulation& simulation);

} // namespace sim
