#pragma once

#include "simulator/kernel/Kernel.h"
#include "simulator/scenario/TomlTable.h"

/// The tables of a scenario about what the kernel shows; each reads one into its setup.
namespace sim {

void ReadMountTable(TomlTable& table, MountSetup& mounts);
/// Of one [[file_system]].
void ReadFileSystem(TomlTable& table, MountSetup& mounts);
/// The key "missing": paths of the board that are not there.
void ReadMissing(TomlTable& table, PathChanges& paths);
/// Texts that attributes have instead of the board's own.
void ReadAttributes(TomlTable& table, PathChanges& paths);

} // namespace sim
