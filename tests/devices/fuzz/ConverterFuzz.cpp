// Feeds arbitrary words of the optical converter to what makes readings of them. Run by
// scripts/fuzz; converter/ holds what a fresh run begins with.

#include "base/Sleep.h"
#include "devices/Converter.h"

#include "tests/support/FuzzInput.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iostream>

// The converter is ready at once.
void tavrelin::SleepMilliseconds(std::uint32_t /*milliseconds*/) {}

namespace {

using namespace tavrelin;

// A float keeps 24 bits of the 25, halves to even; at full scale that gives a 26th, and no bit 24.
double ReadingOf(std::uint32_t word) {
    const std::uint32_t raw = word >> 5U & 0x1FFFFFFU;
    const bool negative = raw < 0x1000000U;
    if (negative) {
        return static_cast<double>(raw) - 16777216.0;
    }
    const double even = std::nearbyint(raw / 2.0) * 2.0 - 16777216.0;
    return even < 16777216.0 ? even : -16777216.0;
}

// Two words of 16 bits, each in the processor's order, as the driver hands them out.
std::uint32_t WordOf(const std::uint8_t* bytes) {
    std::array<std::uint16_t, 2> halves{};
    std::memcpy(halves.data(), bytes, sizeof halves);
    return std::uint32_t{halves[0]} << 16U | halves[1];
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::cerr.setstate(std::ios::badbit); // it is no SPI device
    static double last = 0.0;
    for (; size >= 4; data += 4, size -= 4) {
        // The command is written over the first two bytes; what follows is read.
        const MemoryFile wire("??" + std::string(reinterpret_cast<const char*>(data), 4));
        const SpiDevice device(wire.Path(), 0, 3000000, 16);
        const std::uint32_t word = WordOf(data);
        last = word == 0xA0800000U ? last : ReadingOf(word);
        Hold(static_cast<double>(doADCConversion(&device)) == last);
    }
    return 0;
}
