#pragma once

#include "devices/Demultiplexer.h"
#include "devices/IndicatorWiring.h"
#include "platform/GpioPin.h"
#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/BoardWrites.h"
#include "tests/support/CapturedConsole.h"

#include <gtest/gtest.h>

#include <string>

namespace tavrelin {

/// A board with its console, and what a test says about their lines.
class FrontEnd : public testing::Test {
  protected:
    /// The occurrence-th opening of one of a line's attributes fails.
    void FailToOpen(const std::string& line, const char* attribute, std::uint64_t occurrence = 1) {
        board.Fail("open", "/sys/class/gpio/pio" + line + "/" + attribute, EACCES, occurrence);
    }

    void ExpectSilence() {
        EXPECT_EQ(console.Output(), "");
        EXPECT_EQ(console.Error(), "");
    }

    sim::SimulatedBoard board;
    CapturedConsole console;
};

/// The demultiplexer at work, with its three select lines low and the analog switch, an output as
/// the indicator's second line is, low too. What that took is forgotten.
class DemultiplexerAtWork : public FrontEnd {
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
