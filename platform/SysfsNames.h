#pragma once

#include <cstdint>
#include <string>

/// What lines and channels are called in sysfs.
namespace tavrelin {

/// Where lines and channels are exported and unexported; there when the kernel has them at all.
inline constexpr const char* kGpioClass = "/sys/class/gpio/";
inline constexpr const char* kPwmController = "/sys/class/pwm/pwmchip0/";

/// "B18" for bit 18 of port 1.
inline std::string LineName(std::uint32_t bank, std::uint32_t bit) {
    return static_cast<char>('A' + bank) + std::to_string(bit);
}

/// Where an exported line's attributes are: the board's GPIO driver names it after port and bit.
inline std::string LineDirectory(std::uint32_t bank, std::uint32_t bit) {
    return kGpioClass + ("pio" + LineName(bank, bit));
}

} // namespace tavrelin
