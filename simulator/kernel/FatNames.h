#pragma once

#include <string>
#include <string_view>

namespace sim {

/// Where a path below a folder lies on this machine when the folder is a FAT file system: the case
/// of letters and dots at a name's end make no difference.
std::string FindOnFat(const std::string& folder, std::string_view below);

/// True when the last name of a path is one that a FAT file system takes.
bool FatTakes(std::string_view path);

} // namespace sim
