#include "cycle/MeasurementCycle.h"

#include "tests/cycle/Instrument.h"

#include <cerrno>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

TEST(MeasurementCycle, BeginsWithoutDevicesAndReadings) {
    SimulatedBoard board;
    MeasurementCycle cycle;
    EXPECT_EQ(cycle.DarkCount(), 0.0F);
    EXPECT_EQ(cycle.Reference(), 0.0F);
    EXPECT_EQ(cycle.ReactedSample(), 0.0F);
    EXPECT_FALSE(cycle.Stirrer() || cycle.ReagentPump() || cycle.Valve() || cycle.Led() ||
                 cycle.ExternalAdc());
    EXPECT_EQ(board.Events(), Texts{});
}

TEST(MeasurementCycle, TakesItsDevicesAndThenItsLinesInOrder) {
    SimulatedBoard board;
    MeasurementCycle cycle;
    EXPECT_TRUE(cycle.Init());
    EXPECT_EQ(Happenings(board).front(), "thread 1: ioctl spi SPI_IOC_WR_MODE 0")
        << "the converter is the first";
    EXPECT_EQ(
        Writes(board),
        (Texts{// the LED, 1000 Hz and 30 %; a fresh channel refuses the reset of its duty
               "pwmchip0 export 0", "pwm0 duty_cycle 0 EINVAL", "pwm0 period 1000000",
               "pwm0 duty_cycle 300000", "pwm0 enable 1",
               // the stirrer: enable line high, channel
               "gpio export 47", "B15 direction in", "B15 edge none", "B15 direction out",
               "B15 edge none", "B15 value 1", "pwmchip0 export 2",
               // the pump: direction line, enable line, channel
               "gpio export 3", "A3 direction in", "A3 edge none", "A3 direction out",
               "A3 edge none", "A3 value 1", "gpio export 2", "A2 direction in", "A2 edge none",
               "A2 direction out", "A2 edge none", "A2 value 1", "pwmchip0 export 1",
               // the pump's current limit at level 7
               "gpio export 4", "A4 direction in", "A4 edge none", "gpio export 5",
               "A5 direction in", "A5 edge none", "gpio export 6", "A6 direction in",
               "A6 edge none", "A4 direction out", "A4 edge none", "A5 direction out",
               "A5 edge none", "A6 direction out", "A6 edge none", "A4 value 1", "A5 value 1",
               "A6 value 1"}));
    EXPECT_EQ(board.Now(), 0);
}

TEST(MeasurementCycle, CountsDevicesAsCreatedEvenWithoutABoard) {
    SimulatedBoard board(Where(&sim::BoardSetup::present, false));
    CapturedConsole console;
    MeasurementCycle cycle;
    EXPECT_TRUE(cycle.Init());
    EXPECT_EQ(console.Output(), "StepperDriverBase: Setting up enable GPIO pin failed\n"
                                "StepperDriverBase: Setting up direction GPIO pin failed\n"
                                "Setting current limit GPIO pin(s) to outputs failed\n");
    EXPECT_TRUE(cycle.Stirrer() && cycle.ReagentPump() && cycle.Valve() && cycle.Led() &&
                cycle.ExternalAdc());
}

TEST(MeasurementCycle, ReleasesConverterLedValvePumpAndStirrerInThisOrder) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        MeasurementCycle cycle;
        ASSERT_TRUE(cycle.Init() && cycle.Valve()->Init());
        board.Forget();
        board.Fail("close", "/dev/spidev32765.1", EIO); // a close that succeeds is not told
    }
    EXPECT_EQ(console.Error(), "Could not close SPI device");
    EXPECT_EQ(Happenings(board).front(), "thread 1: close spi EIO");
    EXPECT_EQ(
        Writes(board),
        (Texts{"pwm0 enable 0", "pwmchip0 unexport 0", "pwm3 enable 0 EINVAL",
               "pwmchip0 unexport 3",
               // the pump: current limit, channel, enable, direction
               "gpio unexport 4", "gpio unexport 5", "gpio unexport 6", "pwm1 enable 0 EINVAL",
               "pwmchip0 unexport 1", "gpio unexport 2", "gpio unexport 3",
               // the stirrer
               "pwm2 enable 0 EINVAL", "pwmchip0 unexport 2", "gpio unexport 47"}));
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(MeasurementCycle, ReleasesNothingWithoutDevices) {
    SimulatedBoard board;
    CapturedConsole console;
    { const MeasurementCycle cycle; }
    EXPECT_EQ(console.Error(), "");
    EXPECT_EQ(board.Events(), Texts{});
}

} // namespace
} // namespace tavrelin
