#pragma once

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/CapturedConsole.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

namespace tavrelin {

/// What was shown on standard output and on standard error.
struct Said {
    std::string output;
    std::string error;

    bool operator==(const Said&) const = default;
};

inline const Said kSilence;

inline void PrintTo(const Said& said, std::ostream* text) {
    *text << testing::PrintToString(said.output) << " and " << testing::PrintToString(said.error);
}

/// An attribute by its short name: "B15/value" of a line, "pwm2/enable" of a channel.
inline std::string PathOf(const std::string& attribute) {
    const bool channel = attribute.rfind("pwm", 0) == 0;
    return (channel ? "/sys/class/pwm/pwmchip0/" : "/sys/class/gpio/pio") + attribute;
}

/// A board whose console is watched.
class BoardTest : public testing::Test {
  protected:
    /// A board as it comes, for the next of several cases; nothing has been said on it.
    void NewBoard(const sim::Scenario& scenario = {}) {
        heldBoard_.reset();
        heldConsole_.emplace();
        heldBoard_.emplace(scenario);
    }

    /// All that was said so far.
    Said Console() { return {console.Output(), console.Error()}; }

    /// The occurrence-th opening of an attribute fails.
    void FailToOpen(const std::string& attribute, std::uint64_t occurrence = 1) {
        board.Fail("open", PathOf(attribute), EACCES, occurrence);
    }

  private:
    std::optional<CapturedConsole> heldConsole_{std::in_place};
    std::optional<sim::SimulatedBoard> heldBoard_{std::in_place};

  protected:
    CapturedConsole& console = *heldConsole_;
    sim::SimulatedBoard& board = *heldBoard_;
};

} // namespace tavrelin
