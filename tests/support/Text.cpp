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
        if (Contains(line, what)) {
            found.push_back(line);
        }
    }
    return found;
}

bool Contains(std::string_view text, std::string_view what) {
    return text.find(what) != std::string_view::npos;
}

bool EndsWith(std::string_view text, std::string_view what) {
    return text.size() >= what.size() && text.substr(text.size() - what.size()) == what;
}

} // namespace tavrelin
