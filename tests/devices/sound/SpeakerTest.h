#pragma once

#include "devices/Speaker.h"
#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/CapturedConsole.h"
#include "tests/support/Offspring.h"
#include "tests/support/StandInTools.h"

#include <gtest/gtest.h>

namespace tavrelin {

/// A board whose sound tools are stand-ins. No process outlives a test.
class SpeakerTest : public testing::Test {
  protected:
    void TearDown() override {
        Offspring::End();
        EXPECT_TRUE(Offspring::Children().empty());
    }

    Offspring offspring;
    StandInTools tools;
    sim::SimulatedBoard board;
    CapturedConsole console;
};

} // namespace tavrelin
