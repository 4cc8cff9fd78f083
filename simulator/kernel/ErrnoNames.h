#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sim {

/// "EACCES" for 13; the number itself for one that has no name here.
std::string ErrnoName(int error);
/// "ok" for a result of 0 or more, else the name of the errno that it is the negative of.
std::string Outcome(long result);
/// The errno of a name; nothing for an unknown one.
std::optional<int> ErrnoNumber(std::string_view name);

} // namespace sim
