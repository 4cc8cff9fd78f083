// The whole board without a program: what its lines and channels move, what the detector sees, and
// what happens by itself.

#include "simulator/board/Board.h"
#include "simulator/board/Wiring.h"

#include <cmath>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::Board;
using sim::milliseconds;
using sim::Scenario;
using sim::seconds;
using sim::WorldEvent;

class BoardModel {
  public:
    explicit BoardModel(const Scenario& scenario = {}, std::uint64_t seed = 1)
        : board(scenario, seed, 0) {
        board.onEvent = [this](const std::string& what, const std::string& data) {
            told.push_back(std::to_string(board.now() / milliseconds(1)) + " " + what + " " + data);
        };
    }
    void drive(unsigned line, const char* level) { board.lines.setDirection(line, level); }
    void run(unsigned channel, const char* period, const char* duty) {
        board.pwm.setPeriod(channel, period);
        board.pwm.setDuty(channel, duty);
        board.pwm.setEnable(channel, "1");
    }
    void stop(unsigned channel) { board.pwm.setEnable(channel, "0"); }
    void wait(int ms) { board.advanceTo(board.now() + milliseconds(ms)); }
    /// A reading as the converter sends it.
    std::int32_t reading() { return board.converter.detector(board.now()); }
    void lampOn() { run(sim::lampChannel, "1000000", "300000"); }

    Board board;
    std::vector<std::string> told;
};

TEST(Detector, SeesDarkAndReferenceCounts) {
    Scenario scenario;
    scenario.darkCount = 123;
    scenario.referenceCount = 2'000'000;
    BoardModel model(scenario);
    EXPECT_EQ(model.reading(), 123);
    model.lampOn();
    EXPECT_EQ(model.reading(), 2'000'000);
    model.run(sim::lampChannel, "1000000", "150000");
    EXPECT_EQ(model.reading(), 1'000'062) << "half the light, rounded";
    model.stop(sim::lampChannel);
    EXPECT_EQ(model.reading(), 123);
}

TEST(Detector, SeesTheColourOfTheSample) {
    Scenario scenario;
    scenario.absorbances = {0.5};
    BoardModel model(scenario);
    model.lampOn();
    model.drive(sim::stirrerEnableLine, "low");
    model.drive(sim::pumpEnableLine, "low");
    model.run(sim::pumpChannel, "625000", "312500");
    model.wait(1000);
    model.stop(sim::pumpChannel);
    EXPECT_EQ(model.reading(), 3'000'000);
    model.run(sim::stirrerChannel, "1000000", "500000");
    model.wait(2000);
    EXPECT_EQ(model.reading(), std::lround(20'000 + 2'980'000 * std::pow(10.0, -0.5)));
}

TEST(Detector, HasNoiseOfTheGivenDeviation) {
    Scenario scenario;
    scenario.noise = 50.0;
    BoardModel model(scenario, 9);
    BoardModel same(scenario, 9);
    double squares = 0.0;
    for (int i = 0; i < 10'000; ++i) {
        const double off = model.reading() - 20'000;
        EXPECT_EQ(same.reading() - 20'000, off);
        squares += off * off;
    }
    EXPECT_NEAR(std::sqrt(squares / 10'000), 50.0, 1.5);
}

TEST(Pump, TurnsWhileItsDriverIsEnabledAndPulsed) {
    BoardModel model;
    model.run(sim::pumpChannel, "625000", "312500");
    model.wait(100);
    EXPECT_EQ(model.board.shaft.stepsTurned(model.board.now()), 0) << "not enabled: an input";
    model.drive(sim::pumpEnableLine, "high");
    model.wait(100);
    EXPECT_EQ(model.board.shaft.stepsTurned(model.board.now()), 0) << "high disables the driver";
    model.drive(sim::pumpEnableLine, "low");
    model.wait(100);
    EXPECT_EQ(model.board.shaft.stepsTurned(model.board.now()), 160);
    model.board.pwm.setDuty(sim::pumpChannel, "0");
    model.wait(100);
    EXPECT_EQ(model.board.shaft.stepsTurned(model.board.now()), 160) << "no pulses";
}

TEST(HomeSensor, FollowsTheFlag) {
    BoardModel model;
    model.drive(sim::pumpEnableLine, "low");
    model.run(sim::pumpChannel, "1000000", "500000");
    model.wait(1199);
    EXPECT_TRUE(model.board.lines.at(sim::homeSensorLine).level);
    model.wait(1);
    EXPECT_FALSE(model.board.lines.at(sim::homeSensorLine).level);
    model.wait(67);
    EXPECT_TRUE(model.board.lines.at(sim::homeSensorLine).level);
    EXPECT_EQ(model.told, (std::vector<std::string>{"1200 flag enters the sensor",
                                                    "1267 flag leaves the sensor"}));
}

TEST(HomeSensor, StartsOnTheFlagWhenAskedTo) {
    Scenario scenario;
    scenario.startOnFlag = true;
    EXPECT_FALSE(BoardModel(scenario).board.lines.at(sim::homeSensorLine).level);
    EXPECT_TRUE(BoardModel().board.lines.at(sim::homeSensorLine).level);
}

TEST(HomeSensor, StaysAsItIsHeld) {
    BoardModel model;
    model.board.holdHomeSensor(false);
    model.drive(sim::pumpEnableLine, "low");
    model.run(sim::pumpChannel, "1000000", "500000");
    model.wait(1300);
    EXPECT_FALSE(model.board.lines.at(sim::homeSensorLine).level);
    EXPECT_TRUE(model.told.empty());
}

TEST(Valve, IsOpenWhileItsChannelPulses) {
    BoardModel model;
    EXPECT_FALSE(model.board.valveOpen());
    model.run(sim::valveChannel, "1000000", "1000000");
    EXPECT_TRUE(model.board.valveOpen());
    EXPECT_EQ(model.board.cell.flushes(), 1U);
    model.stop(sim::valveChannel);
    EXPECT_FALSE(model.board.valveOpen());
}

Scenario withEvents() {
    Scenario scenario;
    scenario.events = {{seconds(1), WorldEvent::Kind::removeCard, 0, 0},
                       {seconds(2), WorldEvent::Kind::insertCard, 0, 0},
                       {seconds(3), WorldEvent::Kind::jumpClock, -3600, 0},
                       {seconds(4), WorldEvent::Kind::setInput, 1, 7}};
    return scenario;
}

TEST(World, ActsAtItsTimes) {
    BoardModel model(withEvents());
    EXPECT_EQ(model.board.nextEvent(), seconds(1));
    model.wait(1000);
    EXPECT_FALSE(model.board.card.present);
    model.wait(5000);
    EXPECT_TRUE(model.board.card.present);
    EXPECT_EQ(model.board.wallTime(), seconds(6 - 3600));
    EXPECT_TRUE(model.board.lines.at(7).level);
    EXPECT_EQ(model.board.nextEvent(), sim::never);
    EXPECT_EQ(model.told,
              (std::vector<std::string>{"1000 card removed", "2000 card inserted",
                                        "3000 clock set by -3600 s", "4000 input A7 1"}));
}

TEST(World, NeverGoesBack) {
    BoardModel model;
    model.wait(5);
    model.board.advanceTo(milliseconds(3));
    EXPECT_EQ(model.board.now(), milliseconds(5));
    bool acted = false;
    model.board.at(milliseconds(1), [&] { acted = true; });
    model.board.advanceTo(milliseconds(5));
    EXPECT_TRUE(acted) << "what was due in the past is due now";
}

TEST(Start, ShowsWhatTheScenarioLeaves) {
    Scenario scenario;
    scenario.highInputs = {"C3"};
    scenario.exportedLines = {"B15"};
    scenario.exportedChannels = {3};
    scenario.cardPresent = false;
    const BoardModel model(scenario);
    EXPECT_TRUE(model.board.lines.at(2 * 32 + 3).level);
    EXPECT_TRUE(model.board.lines.at(47).exported);
    EXPECT_TRUE(model.board.pwm.at(3).exported);
    EXPECT_FALSE(model.board.card.present);
}

} // namespace
} // namespace tavrelin
