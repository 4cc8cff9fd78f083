#pragma once

#include <cstdint>
#include <string_view>

namespace sim {

/// The text up to a NUL, without the one newline at its end that the kernel's stores allow.
std::string_view WithoutNewline(std::string_view text);

/// Reads a number as the kernel's stores do: a plus sign or, for a signed kind, a minus sign; then
/// 0x and hexadecimal digits, 0 and octal ones, or decimal ones. 0, EINVAL for what is no number,
/// or ERANGE for one that the kind cannot hold.
int KernelNumber(std::string_view text, std::int32_t& number);
int KernelNumber(std::string_view text, std::uint32_t& number);
int KernelNumber(std::string_view text, std::uint64_t& number);

} // namespace sim
