#pragma once

#include <string_view>

namespace sim {

// Where the board shows to the program: all of the simulator takes these paths from here.
inline constexpr std::string_view kSysfs = "/sys";
inline constexpr std::string_view kClasses = "/sys/class";
inline constexpr std::string_view kBuses = "/sys/bus";
inline constexpr std::string_view kBlocks = "/sys/block";
inline constexpr std::string_view kGpio = "/sys/class/gpio";
inline constexpr std::string_view kPwm = "/sys/class/pwm";
inline constexpr std::string_view kPwmChip = "/sys/class/pwm/pwmchip0";
inline constexpr std::string_view kAnalog = "/sys/bus/iio";
inline constexpr std::string_view kAnalogDevice = "/sys/bus/iio/devices/iio:device0";
inline constexpr std::string_view kCardBlock = "/sys/block/mmcblk0";
inline constexpr std::string_view kDevices = "/dev";
inline constexpr std::string_view kMemoryDevice = "/dev/mem";
inline constexpr std::string_view kSpiDevice = "/dev/spidev32765.1";
inline constexpr std::string_view kCardDevice = "/dev/mmcblk0";
inline constexpr std::string_view kCardPartition = "/dev/mmcblk0p1";
inline constexpr std::string_view kMountPoint = "/mnt/sd-card";
inline constexpr std::string_view kMountTable = "/etc/mtab";
inline constexpr std::string_view kMountInformation = "/proc/self/mountinfo";

/// A folder itself or anything below it.
bool Within(std::string_view path, std::string_view folder);

/// True for a path that belongs to the board and not to this machine, however it is spelled.
bool IsBoardPath(std::string_view path);

/// True for a path, plainly spelled, that may lead to one of its devices, its card or mount table.
bool IsDevicePath(std::string_view path);

/// True when some such path begins so.
bool BeginsDevicePath(std::string_view beginning);

/// True for a path without ".", ".." and doubled slashes: the only spelling that the simulated
/// kernel answers to.
bool IsPlainPath(std::string_view path);

} // namespace sim
