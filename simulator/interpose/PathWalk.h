#pragma once

#include "simulator/run/Simulation.h"

#include <string>

namespace sim {

/// Where a path of a system call leads.
struct Place {
    long error = 0;       ///< negated errno when it leads nowhere
    bool board = false;   ///< to what is the board's; else to this machine's own
    bool strayed = false; ///< to this machine, but by way of a folder of the board's
    std::string path;     ///< absolute, without "." and ".."; empty: a descriptor's own file
};

/// Walks a path as the kernel does, from a folder's descriptor or AT_FDCWD, by way of this
/// machine's links, to what it stands for. The link in its last place is followed when asked for.
/// The board's own links are left to the board.
Place WalkPath(Simulation& simulation, int folder, const char* text, bool follow);

/// The board's folder that the program has gone into; empty while it is in one of this machine's.
std::string& FolderOnBoard();

} // namespace sim
