#pragma once

#include <mntent.h>

#include <string>

namespace tavrelin {

/// Whether some entry of the mount table has a mount directory that contains the path, at any
/// position: "/mnt/sd-card2" counts for "/mnt/sd-card". False when the table cannot be opened.
/// `entry` becomes the entry last read, null when the table ran out; it points into the scan's own
/// buffers and is not to be followed afterwards.
bool is_mounted(const mntent*& entry, const std::string& path);

} // namespace tavrelin
