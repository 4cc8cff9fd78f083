#include "tests/support/Text.h"

namespace tavrelin {

std::vector<std::string> Split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        pieces.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return pieces;
}

std::vector<std::string> LinesWith(std::string_view text, std::string_view what) {
    std::vector<std::string> found;
    for (const std::string& line : LinesOf(text)) {
        if (line.find(what) != std::string::npos) {
            found.push_back(line);
        }
    }
    return found;
}

} // namespace tavrelin
