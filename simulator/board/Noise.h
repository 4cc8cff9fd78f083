#pragma once

#include <cstdint>

namespace sim {

/// Repeatable random numbers: the same seed gives the same sequence on every machine and library.
class Noise {
  public:
    explicit Noise(std::uint64_t seed) : state_(seed) {}

    std::uint64_t Next();
    /// 0 <= result < bound; bound is not 0.
    std::uint64_t Below(std::uint64_t bound) { return Next() % bound; }
    /// Close to a normal distribution with mean 0 and deviation 1: twelve uniform numbers added,
    /// which unlike logarithms gives the same digits everywhere.
    double Normal();

  private:
    std::uint64_t state_;
};

} // namespace sim
