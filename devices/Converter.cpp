#include "devices/Converter.h"

#include "base/SaturatingCast.h"
#include "base/Sleep.h"
#include "devices/Wiring.h"

#include <array>
#include <limits>

namespace tavrelin {

namespace {

constexpr std::uint32_t kCommandBytes = 2;
constexpr std::uint32_t kResultBytes = 4;
constexpr std::uint32_t kSignBit = 0x1000000; // set for numbers that are not negative
constexpr std::uint32_t kCountBits = 0xFFFFFF;

std::int32_t lastConversion = 0;

// Two 16-bit words in the processor's own byte order, as the SPI driver wants them: each goes over
// the wire most significant byte first, whatever the processor.
using TransferBuffer = std::array<std::uint16_t, 2>;

std::uint32_t WordOnWire(const TransferBuffer& buffer) {
    return std::uint32_t{buffer[0]} << 16U | buffer[1];
}

std::uint16_t CommandFor(std::uint8_t channel) {
    constexpr std::uint32_t convert = 0xA080;
    constexpr std::uint16_t repeat = 0xA0C0;
    constexpr std::uint8_t firstWithoutInput = 200;
    if (channel >= firstWithoutInput) {
        return repeat;
    }
    return static_cast<std::uint16_t>(convert | std::uint32_t{channel} << 8U);
}

// Bit 24 clear means a negative number, whose low 24 bits are its two's complement.
std::int32_t SignedCount(std::uint32_t raw) {
    const std::uint32_t low = raw & kCountBits;
    return static_cast<std::int32_t>((raw & kSignBit) != 0 ? low : low | ~kCountBits);
}

} // namespace

float doRawConversion(std::uint8_t channel, const SpiDevice* device) {
    if (device == nullptr) {
        return 0.0F;
    }
    TransferBuffer buffer = {CommandFor(channel), 0};
    // Neither is looked at: without an answer the buffer stays zero, and that is what is read.
    static_cast<void>(device->Write(buffer.data(), kCommandBytes));
    const std::uint32_t reference = WordOnWire(buffer);
    SleepMilliseconds(wiring::kConversionTime);
    buffer.fill(0);
    static_cast<void>(device->Read(buffer.data(), kResultBytes));
    const std::uint32_t word = WordOnWire(buffer);
    if (word == reference) {
        return kNoNewResult;
    }
    // A float, which keeps 24 of the 25 bits: the reading below says what that makes of it.
    return static_cast<float>(word >> 5U & 0x1FFFFFFU);
}

float doADCConversion(const SpiDevice* device) {
    const auto raw = SaturatingCast<std::uint32_t>(doRawConversion(wiring::kDetectorInput, device));
    if (raw != std::numeric_limits<std::uint32_t>::max()) {
        lastConversion = SignedCount(raw);
    }
    return static_cast<float>(lastConversion);
}

} // namespace tavrelin
