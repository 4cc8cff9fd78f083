#include "simulator/board/KernelNumber.h"

#include <charconv>

namespace sim {

std::string_view WithoutNewline(std::string_view text) {
    if (!text.empty() && text.back() == '\n') {
        text.remove_suffix(1);
    }
    return text;
}

std::optional<std::int64_t> KernelNumber(std::string_view text) {
    text = WithoutNewline(text);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

} // namespace sim
