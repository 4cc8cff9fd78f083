#pragma once

#include <mntent.h>

#include <cstddef>
#include <cstdio>
#include <memory>

namespace tavrelin {

/// The kernel's list of what is mounted.
inline constexpr const char* kMountTable = "/etc/mtab";
inline constexpr const char* kMountTableMode = "r";
/// Room for the text of one entry; longer ones are cut by the C library.
inline constexpr std::size_t kMountEntryText = 4096;

struct CloseMountTable {
    void operator()(FILE* table) const { ::endmntent(table); }
};
/// An open mount table; null when it could not be opened.
using MountTableFile = std::unique_ptr<FILE, CloseMountTable>;

} // namespace tavrelin
