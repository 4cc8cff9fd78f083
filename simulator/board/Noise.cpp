#include "simulator/board/Noise.h"

namespace sim {

// SplitMix64.
std::uint64_t Noise::Next() {
    state_ += 0x9E3779B97F4A7C15ULL;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9ULL;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBULL;
    return mixed ^ (mixed >> 31U);
}

double Noise::Normal() {
    double sum = -6.0;
    for (int i = 0; i < 12; ++i) {
        sum += static_cast<double>(Next() >> 11U) * 0x1.0p-53;
    }
    return sum;
}

} // namespace sim
