#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavrelin {

/// The pieces between the separators; a separator at the end begins no further piece.
std::vector<std::string> Split(std::string_view text, char separator);
inline std::vector<std::string> LinesOf(std::string_view text) {
    return Split(text, '\n');
}

/// Those of the lines that contain the text.
std::vector<std::string> LinesWith(std::string_view text, std::string_view what);

} // namespace tavrelin
