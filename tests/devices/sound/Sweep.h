#pragma once

#include <cstddef>
#include <string>

namespace tavrelin {

/// The bytes of one period of the test tone: `samples` samples of 16 bits, low byte first, from
/// the start of a wave of this frequency.
std::string TonePeriod(double frequency, std::size_t samples);

/// The bytes of the whole rising sweep: periods from 500 Hz on, each 50 Hz higher than the last.
std::string Sweep(unsigned periods, std::size_t samplesPerPeriod);

/// Where two byte texts begin to differ, as a sentence; empty when they are equal.
std::string Difference(const std::string& one, const std::string& other);

} // namespace tavrelin
