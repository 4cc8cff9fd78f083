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
    void driveLow(unsigned line) {
        board.lines.exportLine(std::to_string(line));
        board.lines.setDirection(line, "out");
    }

    void pulse(unsigned channel, const char* period, const char* duty) {
        board.pwm.setPeriod(channel, period);
        board.pwm.setDuty(channel, duty);
        board.pwm.setEnable(channel, "1");
    }

    std::int32_t reading() {
        constexpr std::array<std::uint8_t, 2> command{0xA0, 0x80};
        board.converter.receive(board.now(), command);
        board.advanceTo(board.now() + Converter::conversionTime);
        std::array<std::uint8_t, 4> wire{};
        board.converter.send(board.now(), wire);
        const std::uint32_t word = static_cast<std::uint32_t>(wire[0]) << 24U |
                                   static_cast<std::uint32_t>(wire[1]) << 16U |
                                   static_cast<std::uint32_t>(wire[2]) << 8U | wire[3];
        return static_cast<std::int32_t>(word >> 5U & 0xFFFFFFU);
    }

    Scenario scenario;
    Board board{scenario, 1, WallClock::defaultStart};
};

TEST_F(BoardTest, ReadsTheDarkCountWithoutTheLampAndTheReferenceWithIt) {
    EXPECT_EQ(reading(), scenario.darkCount);
    pulse(lampChannel, "1000000", "300000");
    EXPECT_EQ(reading(), scenario.referenceCount);
}

TEST_F(BoardTest, TurnsThePumpOnlyWithPulsesAndAnEnabledChip) {
    pulse(pumpChannel, "625000", "312500");
    board.advanceTo(seconds(1));
    EXPECT_EQ(board.shaft.stepsTurned(board.now()), 0);
    driveLow(pumpEnableLine);
    board.advanceTo(seconds(2));
    EXPECT_EQ(board.shaft.stepsTurned(board.now()), 1600);
    board.lines.setValue(pumpEnableLine, "1");
    board.advanceTo(seconds(3));
    EXPECT_EQ(board.shaft.stepsTurned(board.now()), 1600);
}

TEST_F(BoardTest, PullsTheHomeSensorsLineLowWhileTheFlagPasses) {
    EXPECT_TRUE(board.lines.at(homeSensorLine).level);
    driveLow(pumpEnableLine);
    pulse(pumpChannel, "625000", "312500");
    board.advanceTo(milliseconds(750));
    EXPECT_FALSE(board.lines.at(homeSensorLine).level);
    board.advanceTo(milliseconds(750) + 67 * 625'000);
    EXPECT_TRUE(board.lines.at(homeSensorLine).level);
}

TEST_F(BoardTest, HasThingsHappenInTheirOrderOnTheWay) {
    std::vector<Nanoseconds> moments;
    board.at(seconds(2), [&] { moments.push_back(board.now()); });
    board.at(seconds(1), [&] { moments.push_back(board.now()); });
    board.advanceTo(seconds(3));
    EXPECT_EQ(moments, (std::vector{seconds(1), seconds(2)}));
    EXPECT_EQ(board.now(), seconds(3));
}

TEST_F(BoardTest, ShowsTheTrueAbsorbanceAfterFlushDoseAndStirring) {
    pulse(lampChannel, "1000000", "300000");
    pulse(valveChannel, "1000000", "1000000");
    board.advanceTo(seconds(1));
    board.pwm.setEnable(valveChannel, "0");
    driveLow(pumpEnableLine);
    pulse(pumpChannel, "625000", "312500");
    board.advanceTo(seconds(2));
    board.pwm.setEnable(pumpChannel, "0");
    driveLow(stirrerEnableLine);
    pulse(stirrerChannel, "1562500", "781250");
    board.advanceTo(seconds(4));
    // 20000 + 2980000 * 10^-0.25, rounded.
    EXPECT_EQ(reading(), 1'695'777);
}

} // namespace
} // namespace sim
