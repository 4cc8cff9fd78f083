#pragma once

#include <cstdint>

namespace tavrelin {

/// Fills the destination with `count` samples of a sine of `frequency` Hz at half of full scale,
/// signed 16 bits, low byte first, 18000 samples per second. `phase`, in seconds since the wave's
/// last start, is where this begins and becomes where the next call goes on. False without a
/// destination or phase; a count below 1 is a success that touches neither.
bool GenerateTone(std::uint8_t* destination, std::int32_t count, double frequency, double* phase);

} // namespace tavrelin
