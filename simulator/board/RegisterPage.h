#pragma once

#include "simulator/board/Lines.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace sim {

/// The parallel-I/O controllers' register page at 0xFFFFF000: ports A to D at offsets 0x400, 0x600,
/// 0x800 and 0xA00. A mapping shows the pin data status registers as they stood when it was made,
/// and its stores to the set and clear registers act when it is released.
class RegisterPage {
  public:
    static constexpr std::uint64_t kAddress = 0xFFFFF000;
    static constexpr std::size_t kSize = 4096;
    static constexpr unsigned kSetOutput = 0x30;
    static constexpr unsigned kClearOutput = 0x34;
    static constexpr unsigned kPinStatus = 0x3C;

    explicit RegisterPage(Lines& lines) : lines_(lines) {}

    /// Fills a page that the program is about to map.
    void Load(std::span<std::uint32_t> page) const;
    /// Carries out the stores found in a page, and tells each as text ("PIOB set 00008000").
    std::vector<std::string> Store(std::span<const std::uint32_t> page);

    static constexpr std::size_t WordOf(unsigned port, unsigned reg) {
        return (0x400U + port * 0x200U + reg) / sizeof(std::uint32_t);
    }

  private:
    Lines& lines_;
};

} // namespace sim
