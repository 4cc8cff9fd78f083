#include "cycle/MeasurementCycle.h"

#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>
#include <memory>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

TEST(MeasurementCycle, BeginsWithoutDevicesAndReadings) {
    SimulatedBoard board;
    MeasurementCycle cycle;
    EXPECT_EQ(cycle.DarkCount(), 0.0F);
    EXPECT_EQ(cycle.Reference(), 0.0F);
    EXPECT_EQ(cycle.ReactedSample(), 0.0F);
    EXPECT_EQ(cycle.Stirrer(), nullptr);
    EXPECT_EQ(cycle.ReagentPump(), nullptr);
    EXPECT_EQ(cycle.Valve(), nullptr);
    EXPECT_EQ(cycle.Led(), nullptr);
    EXPECT_EQ(cycle.ExternalAdc(), nullptr);
    EXPECT_EQ(board.Events(), Texts{});
}

TEST(MeasurementCycle, TakesItsDevicesAndThenItsLinesInOrder) {
    SimulatedBoard board;
    MeasurementCycle cycle;
    EXPECT_TRUE(cycle.Init());
    EXPECT_EQ(
        Writes(board),
        (Texts{// the converter
               "spi SPI_IOC_WR_MODE 0", "spi SPI_IOC_RD_MODE 0", "spi SPI_IOC_WR_BITS_PER_WORD 16",
               "spi SPI_IOC_RD_BITS_PER_WORD 16", "spi SPI_IOC_WR_MAX_SPEED_HZ 3000000",
               "spi SPI_IOC_RD_MAX_SPEED_HZ 3000000",
               // the LED, 1000 Hz and 30 %; a fresh channel refuses the reset of its duty
               "pwmchip0/export 0", "pwm0/duty_cycle 0 EINVAL", "pwm0/period 1000000",
               "pwm0/duty_cycle 300000", "pwm0/enable 1",
               // the stirrer: enable line high, channel
               "gpio/export 47", "B15/direction in", "B15/edge none", "B15/direction out",
               "B15/edge none", "B15/value 1", "pwmchip0/export 2",
               // the pump: direction line, enable line, channel
               "gpio/export 3", "A3/direction in", "A3/edge none", "A3/direction out",
               "A3/edge none", "A3/value 1", "gpio/export 2", "A2/direction in", "A2/edge none",
               "A2/direction out", "A2/edge none", "A2/value 1", "pwmchip0/export 1",
               // the pump's current limit at level 7
               "gpio/export 4", "A4/direction in", "A4/edge none", "gpio/export 5",
               "A5/direction in", "A5/edge none", "gpio/export 6", "A6/direction in",
               "A6/edge none", "A4/direction out", "A4/edge none", "A5/direction out",
               "A5/edge none", "A6/direction out", "A6/edge none", "A4/value 1", "A5/value 1",
               "A6/value 1"}));
    EXPECT_EQ(board.Now(), 0);
}

TEST(MeasurementCycle, GivesEachDeviceItsChannel) {
    SimulatedBoard board;
    MeasurementCycle cycle;
    ASSERT_TRUE(cycle.Init());
    EXPECT_EQ(cycle.Led()->Channel(), 0);
    EXPECT_EQ(cycle.ReagentPump()->Channel(), 1);
    EXPECT_EQ(cycle.Stirrer()->Channel(), 2);
    EXPECT_EQ(cycle.Valve()->Channel(), 3);
    EXPECT_EQ(cycle.Valve()->Frequency(), 1000);
}

TEST(MeasurementCycle, CountsDevicesAsCreatedEvenWithoutABoard) {
    Scenario scenario;
    scenario.board.present = false;
    SimulatedBoard board(scenario);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    MeasurementCycle cycle;
    EXPECT_TRUE(cycle.Init());
    std::cout.flush();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "StepperDriverBase: Setting up enable GPIO pin failed\n"
              "StepperDriverBase: Setting up direction GPIO pin failed\n"
              "Setting current limit GPIO pin(s) to outputs failed\n");
    EXPECT_NE(cycle.ExternalAdc(), nullptr);
    EXPECT_NE(cycle.Led(), nullptr);
    EXPECT_NE(cycle.ReagentPump(), nullptr);
    EXPECT_NE(cycle.Valve(), nullptr);
    EXPECT_NE(cycle.Stirrer(), nullptr);
}

TEST(MeasurementCycle, ReleasesConverterLedValvePumpAndStirrerInThisOrder) {
    SimulatedBoard board;
    auto cycle = std::make_unique<MeasurementCycle>();
    ASSERT_TRUE(cycle->Init());
    ASSERT_TRUE(cycle->Valve()->Init());
    board.Forget();
    board.Fail("close", "/dev/spidev32765.1", EIO); // a close that succeeds is not told
    testing::internal::CaptureStderr();
    cycle.reset();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Could not close SPI device");
    EXPECT_EQ(
        Happenings(board),
        (Texts{"thread 1: close spi EIO", "thread 1: write pwm0/enable \"0\"",
               "thread 1: write pwmchip0/unexport \"0\"",
               "thread 1: write pwm3/enable \"0\" EINVAL",
               "thread 1: write pwmchip0/unexport \"3\"",
               // the pump: current limit, channel, enable, direction
               "thread 1: write gpio/unexport \"4\"", "thread 1: write gpio/unexport \"5\"",
               "thread 1: write gpio/unexport \"6\"", "thread 1: write pwm1/enable \"0\" EINVAL",
               "thread 1: write pwmchip0/unexport \"1\"", "thread 1: write gpio/unexport \"2\"",
               "thread 1: write gpio/unexport \"3\"",
               // the stirrer
               "thread 1: write pwm2/enable \"0\" EINVAL",
               "thread 1: write pwmchip0/unexport \"2\"", "thread 1: write gpio/unexport \"47\""}));
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(MeasurementCycle, ReleasesNothingWithoutDevices) {
    SimulatedBoard board;
    testing::internal::CaptureStderr();
    { const MeasurementCycle cycle; }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(board.Events(), Texts{});
}

} // namespace
} // namespace tavrelin
