#pragma once

#include <cstdint>

namespace tavrelin {

/// Where the controller's registers are mapped from.
inline constexpr const char* kMemoryDevice = "/dev/mem";

/// Level of line `bit` (0 to 31) of port `bank`, read straight from the controller's registers
/// through the memory device: kLevelLow, kLevelHigh, or kLevelError for a wrong bit or when the
/// registers cannot be mapped (message on standard error). Needs no exported line; the kernel must
/// leave the page free.
std::uint32_t ReadMappedPin(std::uint32_t bank, std::uint32_t bit);

/// Drives the line high for kLevelHigh, else low, in the same way. The line must be an output
/// already; no other line changes.
bool WriteMappedPin(std::uint32_t bank, std::uint32_t bit, std::uint32_t level);

} // namespace tavrelin
