#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace sim {

/// The text without the one newline at its end that the kernel's stores allow.
std::string_view WithoutNewline(std::string_view text);

/// A decimal number with an optional minus sign, as the kernel's stores read one; nothing when it
/// is not.
std::optional<std::int64_t> KernelNumber(std::string_view text);

} // namespace sim
