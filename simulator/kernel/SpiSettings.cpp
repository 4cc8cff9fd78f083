#include "simulator/kernel/SpiFile.h"

#include <cerrno>

namespace sim {
namespace {

/// What the controller can do; the kernel refuses every other mode bit, ...
constexpr std::uint32_t kControllerModes = SPI_CPHA | SPI_CPOL | SPI_CS_HIGH;
/// ... but forgoes wider buses in silence, unless two widths are asked for at once.
constexpr std::uint32_t kWiderSending = SPI_TX_DUAL | SPI_TX_QUAD;
constexpr std::uint32_t kWiderReceiving = SPI_RX_DUAL | SPI_RX_QUAD;

} // namespace

long SpiFile::Setting(unsigned long request, void* argument) {
    const auto byte = [argument] { return *static_cast<const std::uint8_t*>(argument); };
    const auto word = [argument] { return *static_cast<const std::uint32_t*>(argument); };
    switch (request) {
    case SPI_IOC_WR_MODE:
        return SetMode("SPI_IOC_WR_MODE", byte());
    case SPI_IOC_WR_MODE32:
        return SetMode("SPI_IOC_WR_MODE32", word());
    case SPI_IOC_WR_LSB_FIRST:
        return Asked("SPI_IOC_WR_LSB_FIRST", byte(), byte() == 0);
    case SPI_IOC_WR_BITS_PER_WORD:
        return SetBits(byte());
    case SPI_IOC_WR_MAX_SPEED_HZ:
        return SetSpeed(word());
    case SPI_IOC_RD_MODE:
        return Tell<std::uint8_t>("SPI_IOC_RD_MODE", settings_.mode, argument);
    case SPI_IOC_RD_MODE32:
        return Tell<std::uint32_t>("SPI_IOC_RD_MODE32", settings_.mode, argument);
    case SPI_IOC_RD_LSB_FIRST:
        return Tell<std::uint8_t>("SPI_IOC_RD_LSB_FIRST", 0, argument);
    case SPI_IOC_RD_BITS_PER_WORD:
        return Tell<std::uint8_t>("SPI_IOC_RD_BITS_PER_WORD", settings_.bitsPerWord, argument);
    case SPI_IOC_RD_MAX_SPEED_HZ:
        return Tell<std::uint32_t>("SPI_IOC_RD_MAX_SPEED_HZ", settings_.speed, argument);
    default:
        return -ENOTTY;
    }
}

template <typename Number>
long SpiFile::Tell(const char* name, std::uint32_t value, void* argument) {
    *static_cast<Number*>(argument) = static_cast<Number>(value);
    events_.Add("ioctl", Path(), std::string(name) + " " + std::to_string(value));
    return 0;
}

long SpiFile::Asked(const char* name, std::uint32_t value, bool accepted) {
    events_.Add("ioctl", Path(),
                std::string(name) + " " + std::to_string(value) + (accepted ? "" : " EINVAL"));
    return accepted ? 0 : -EINVAL;
}

long SpiFile::SetMode(const char* name, std::uint32_t mode) {
    constexpr std::uint32_t wider = kWiderSending | kWiderReceiving;
    const bool accepted = (mode & ~(kControllerModes | wider)) == 0 &&
                          (mode & kWiderSending) != kWiderSending &&
                          (mode & kWiderReceiving) != kWiderReceiving;
    const long error = Asked(name, mode, accepted);
    if (error == 0) {
        settings_.mode = mode & kControllerModes;
    }
    return error;
}

long SpiFile::SetBits(std::uint8_t bits) {
    const unsigned wanted = bits == 0 ? 8 : bits;
    const long error = Asked("SPI_IOC_WR_BITS_PER_WORD", bits, IsWordSize(wanted));
    if (error == 0) {
        settings_.bitsPerWord = static_cast<std::uint8_t>(wanted);
    }
    return error;
}

long SpiFile::SetSpeed(std::uint32_t speed) {
    const long error = Asked("SPI_IOC_WR_MAX_SPEED_HZ", speed, speed != 0);
    if (error == 0) {
        settings_.speed = speed;
    }
    return error;
}

} // namespace sim
