#pragma once

#include "devices/Demultiplexer.h"
#include "devices/IndicatorWiring.h"
#include "platform/GpioPin.h"
#include "tests/support/BoardTest.h"
#include "tests/support/BoardWrites.h"
#include "tests/support/InOrder.h"

#include <array>
#include <cstddef>
#include <string>

namespace tavrelin {

/// The board's own converter: its device, the counts of its input 6, what a count is worth.
inline constexpr const char* kConverter = "/sys/bus/iio/devices/iio:device0/";
inline constexpr const char* kCounts = "/sys/bus/iio/devices/iio:device0/in_voltage6_raw";
inline constexpr const char* kScale = "/sys/bus/iio/devices/iio:device0/in_voltage_scale";

/// What a reading that fails leaves in place.
inline constexpr float kUntouched = -123.5F;

/// What drives lines to levels, written as "010100".
template <std::size_t Count>
sim::Texts LevelWrites(const std::array<const char*, Count>& lines, const std::string& levels) {
    sim::Texts writes;
    for (std::size_t line = 0; line < levels.size(); ++line) {
        writes.push_back(std::string(lines[line]) + " value " + levels[line]);
    }
    return writes;
}

/// The demultiplexer's select lines, lowest bit first; the kernel numbers them 91, 92 and 95. What
/// shows a channel's bits on them, what claims them and makes them low outputs, what releases them.
inline constexpr std::array<const char*, 3> kSelectLines = {"C27", "C28", "C31"};
inline sim::Texts SelectWrites(const std::string& bits) {
    return LevelWrites(kSelectLines, bits);
}
inline const sim::Texts kDemultiplexerSetUp = {
    "gpio export 91",    "C27 direction in",  "C27 edge none",  "gpio export 92",
    "C28 direction in",  "C28 edge none",     "gpio export 95", "C31 direction in",
    "C31 edge none",     "C27 direction out", "C27 edge none",  "C27 value 0",
    "C28 direction out", "C28 edge none",     "C28 value 0",    "C31 direction out",
    "C31 edge none",     "C31 value 0"};
inline const sim::Texts kDemultiplexerReleased = {"gpio unexport 91", "gpio unexport 92",
                                                  "gpio unexport 95"};

/// The demultiplexer at work, with its three select lines low and the analog switch, an output as
/// the indicator's second line is, low too. What that took is forgotten.
class DemultiplexerAtWork : public BoardTest {
  protected:
    DemultiplexerAtWork() {
        EXPECT_TRUE(analogSwitch.SetDirection(kPinOutput));
        EXPECT_TRUE(demultiplexer.Init(wiring::kDemultiplexerSelect));
        board.Forget();
    }

    GpioPin analogSwitch{3, 18};
    Demultiplexer demultiplexer;
};

} // namespace tavrelin
