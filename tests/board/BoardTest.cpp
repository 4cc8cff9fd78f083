// The board as a whole: what lines and channels move, and what the detector makes of it.

#include "simulator/board/Board.h"
#include "simulator/board/Wiring.h"

#include <array>
#include <gtest/gtest.h>
#include <vector>

namespace sim {
namespace {

class BoardTest : public testing::Test {
  protected:
    void DriveLow(unsigned line) {
        board.lines.ExportLine(std::to_string(line));
        board.lines.SetDirection(line, "out");
    }

    void Pulse(unsigned channel, const char* period, const char* duty) {
        board.pwm.SetPeriod(channel, period);
        board.pwm.SetDuty(channel, duty);
        board.pwm.SetEnable(channel, "1");
    }

    std::int32_t Reading() {
        constexpr std::array<std::uint8_t, 2> command{0xA0, 0x80};
        board.converter.Receive(board.Now(), command);
        board.AdvanceTo(board.Now() + Converter::kConversionTime);
        std::array<std::uint8_t, 4> wire{};
        board.converter.Send(board.Now(), wire);
        const std::uint32_t word = static_cast<std::uint32_t>(wire[0]) << 24U |
                                   static_cast<std::uint32_t>(wire[1]) << 16U |
                                   static_cast<std::uint32_t>(wire[2]) << 8U | wire[3];
        return static_cast<std::int32_t>(word >> 5U & 0xFFFFFFU);
    }

    Scenario scenario;
    Board board{scenario, 1, WallClock::kDefaultStart};
};

TEST_F(BoardTest, ReadsTheDarkCountWithoutTheLampAndTheReferenceWithIt) {
    EXPECT_EQ(Reading(), scenario.darkCount);
    Pulse(kLampChannel, "1000000", "300000");
    EXPECT_EQ(Reading(), scenario.referenceCount);
}

TEST_F(BoardTest, TurnsThePumpOnlyWithPulsesAndAnEnabledChip) {
    Pulse(kPumpChannel, "625000", "312500");
    board.AdvanceTo(Seconds(1));
    EXPECT_EQ(board.shaft.StepsTurned(board.Now()), 0);
    DriveLow(kPumpEnableLine);
    board.AdvanceTo(Seconds(2));
    EXPECT_EQ(board.shaft.StepsTurned(board.Now()), 1600);
    board.lines.SetValue(kPumpEnableLine, "1");
    board.AdvanceTo(Seconds(3));
    EXPECT_EQ(board.shaft.StepsTurned(board.Now()), 1600);
}

TEST_F(BoardTest, PullsTheHomeSensorsLineLowWhileTheFlagPasses) {
    EXPECT_TRUE(board.lines.At(kHomeSensorLine).level);
    DriveLow(kPumpEnableLine);
    Pulse(kPumpChannel, "625000", "312500");
    board.AdvanceTo(Milliseconds(750));
    EXPECT_FALSE(board.lines.At(kHomeSensorLine).level);
    board.AdvanceTo(Milliseconds(750) + 67 * 625'000);
    EXPECT_TRUE(board.lines.At(kHomeSensorLine).level);
}

TEST_F(BoardTest, HasThingsHappenInTheirOrderOnTheWay) {
    std::vector<Nanoseconds> moments;
    board.At(Seconds(2), [&] { moments.push_back(board.Now()); });
    board.At(Seconds(1), [&] { moments.push_back(board.Now()); });
    board.AdvanceTo(Seconds(3));
    EXPECT_EQ(moments, (std::vector{Seconds(1), Seconds(2)}));
    EXPECT_EQ(board.Now(), Seconds(3));
}

TEST_F(BoardTest, ShowsTheTrueAbsorbanceAfterFlushDoseAndStirring) {
    Pulse(kLampChannel, "1000000", "300000");
    Pulse(kValveChannel, "1000000", "1000000");
    board.AdvanceTo(Seconds(1));
    board.pwm.SetEnable(kValveChannel, "0");
    DriveLow(kPumpEnableLine);
    Pulse(kPumpChannel, "625000", "312500");
    board.AdvanceTo(Seconds(2));
    board.pwm.SetEnable(kPumpChannel, "0");
    DriveLow(kStirrerEnableLine);
    Pulse(kStirrerChannel, "1562500", "781250");
    board.AdvanceTo(Seconds(4));
    // 20000 + 2980000 * 10^-0.25, rounded.
    EXPECT_EQ(Reading(), 1'695'777);
}

} // namespace
} // namespace sim
