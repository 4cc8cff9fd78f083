#pragma once

#include <mntent.h>

#include <string>

namespace tavrelin {

/// Lists the mounted file systems on standard output, a line each, with their total, free and
/// available bytes, flushed: "/dev/mmcblk0p1 /mnt/sd-card size=7948206080 free=7001178112
/// avail=7001178112". One that cannot be examined is left out; all are when the mount table cannot
/// be opened. An entry without a device name makes standard output bad for the rest of the program.
/// `entry` becomes the entry last read: null, as the table always runs out.
void print_storage_space(const mntent*& entry);

/// Opens the mount table, or the given file in the given mode, and closes it again; an empty text
/// stands for the usual one. Always true: whether it could be opened does not show.
bool can_open_mount_table(const std::string& file, const std::string& mode);

/// Has a shell count the mounts of the card's partition, which prints the count on standard output.
/// Compares the shell's raw status with 1, which it never is after a shell that ended by itself.
bool is_mmc_partition_mounted_by_shell();

} // namespace tavrelin
