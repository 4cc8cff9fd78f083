#pragma once

#include <string_view>

namespace sim {

/// A folder itself or anything below it.
bool Within(std::string_view path, std::string_view folder);

/// True for a path that belongs to the board and not to this machine, however it is spelled.
bool IsBoardPath(std::string_view path);

/// True when some path of the board begins so.
bool BeginsBoardPath(std::string_view beginning);

/// True for a path without ".", ".." and doubled slashes: the only spelling that the simulated
/// kernel answers to.
bool IsPlainPath(std::string_view path);

} // namespace sim
