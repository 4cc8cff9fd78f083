// The whole board without a program: what its lines and channels move, what the detector sees, and
// what happens by itself.

#include "simulator/board/Board.h"
#include "simulator/board/Wiring.h"

#include <cmath>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::Board;
using sim::BoardSetup;
using sim::Milliseconds;
using sim::Seconds;
using Kind = sim::WorldEvent::Kind;

class BoardModel {
  public:
    explicit BoardModel(const BoardSetup& setup = {}, std::uint64_t seed = 1)
        : board(setup, seed, 0) {
        board.onEvent = [this](const std::string& what, const std::string& data) {
            told.push_back(std::to_string(board.Now() / Milliseconds(1)) + " " + what + " " + data);
        };
    }
    void Drive(unsigned line, const char* level) { board.lines.SetDirection(line, level); }
    void Run(unsigned channel, const char* period, const char* duty) {
        board.pwm.SetPeriod(channel, period);
        board.pwm.SetDuty(channel, duty);
        board.pwm.SetEnable(channel, "1");
    }
    void Stop(unsigned channel) { board.pwm.SetEnable(channel, "0"); }
    void Wait(int ms) { board.AdvanceTo(board.Now() + Milliseconds(ms)); }
    std::int64_t Steps() const { return board.shaft.StepsTurned(board.Now()); }
    bool HomeSensor() const { return board.lines.At(sim::kHomeSensorLine).level; }
    /// A reading as the converter sends it.
    std::int32_t Reading() { return board.converter.detector(board.Now()); }
    void LampOn() { Run(sim::kLampChannel, "1000000", "300000"); }

    Board board;
    std::vector<std::string> told;
};

TEST(Detector, SeesDarkAndReferenceCounts) {
    BoardSetup setup;
    setup.detector.dark = 123;
    setup.detector.reference = 2'000'000;
    BoardModel model(setup);
    EXPECT_EQ(model.Reading(), 123);
    model.LampOn();
    EXPECT_EQ(model.Reading(), 2'000'000);
    model.Run(sim::kLampChannel, "1000000", "150000");
    EXPECT_EQ(model.Reading(), 1'000'062) << "half the light, rounded";
    model.Stop(sim::kLampChannel);
    EXPECT_EQ(model.Reading(), 123);
}

TEST(Detector, SeesTheColourOfTheSample) {
    BoardSetup setup;
    setup.absorbances = {0.5};
    BoardModel model(setup);
    model.LampOn();
    model.Run(sim::kValveChannel, "1000000", "1000000");
    model.Wait(1000);
    model.Stop(sim::kValveChannel);
    model.Drive(sim::kStirrerEnableLine, "low");
    model.Drive(sim::kPumpEnableLine, "low");
    model.Run(sim::kPumpChannel, "625000", "312500");
    model.Wait(1000);
    model.Stop(sim::kPumpChannel);
    EXPECT_EQ(model.Reading(), 3'000'000);
    model.Run(sim::kStirrerChannel, "1000000", "500000");
    model.Wait(2000);
    EXPECT_EQ(model.Reading(), 962'359) << "20000 + 2980000 * 10^-0.5";
}

TEST(Detector, HasNoiseOfTheGivenDeviation) {
    BoardSetup setup;
    setup.detector.noise = 50.0;
    BoardModel model(setup, 9);
    BoardModel same(setup, 9);
    double squares = 0.0;
    for (int i = 0; i < 10'000; ++i) {
        const double off = model.Reading() - 20'000;
        EXPECT_EQ(same.Reading() - 20'000, off);
        squares += off * off;
    }
    EXPECT_NEAR(std::sqrt(squares / 10'000), 50.0, 1.5);
}

TEST(Pump, TurnsWhileItsDriverIsEnabledAndPulsed) {
    BoardModel model;
    model.Run(sim::kPumpChannel, "625000", "312500");
    model.Wait(100);
    EXPECT_EQ(model.Steps(), 0) << "not enabled: an input";
    model.Drive(sim::kPumpEnableLine, "high");
    model.Wait(100);
    EXPECT_EQ(model.Steps(), 0) << "high disables the driver";
    model.Drive(sim::kPumpEnableLine, "low");
    model.Wait(100);
    EXPECT_EQ(model.Steps(), 160);
    model.board.pwm.SetDuty(sim::kPumpChannel, "0");
    model.Wait(100);
    EXPECT_EQ(model.Steps(), 160) << "no pulses";
}

TEST(HomeSensor, FollowsTheFlag) {
    BoardModel model;
    model.Drive(sim::kPumpEnableLine, "low");
    model.Run(sim::kPumpChannel, "1000000", "500000");
    model.Wait(1199);
    EXPECT_TRUE(model.HomeSensor());
    model.Wait(1);
    EXPECT_FALSE(model.HomeSensor());
    model.Wait(67);
    EXPECT_TRUE(model.HomeSensor());
    EXPECT_EQ(model.told, (std::vector<std::string>{"1200 flag enters the sensor",
                                                    "1267 flag leaves the sensor"}));
}

TEST(HomeSensor, StartsOnTheFlagWhenAskedTo) {
    BoardSetup setup;
    setup.pump.onFlag = true;
    EXPECT_FALSE(BoardModel(setup).HomeSensor());
    EXPECT_TRUE(BoardModel().HomeSensor());
}

TEST(HomeSensor, StaysAsItIsHeld) {
    BoardModel model;
    model.board.HoldHomeSensor(false);
    model.Drive(sim::kPumpEnableLine, "low");
    model.Run(sim::kPumpChannel, "1000000", "500000");
    model.Wait(1300);
    EXPECT_FALSE(model.HomeSensor());
    EXPECT_TRUE(model.told.empty());
}

TEST(Valve, IsOpenWhileItsChannelPulses) {
    BoardModel model;
    EXPECT_FALSE(model.board.ValveOpen());
    model.Run(sim::kValveChannel, "1000000", "1000000");
    EXPECT_TRUE(model.board.ValveOpen());
    EXPECT_EQ(model.board.cell.Flushes(), 1U);
    model.Stop(sim::kValveChannel);
    EXPECT_FALSE(model.board.ValveOpen());
}

TEST(World, ActsAtItsTimes) {
    BoardSetup setup;
    setup.events = {{Seconds(3), Kind::JumpClock, -3600, 0},
                    {Seconds(1), Kind::RemoveCard, 0, 0},
                    {Seconds(2), Kind::InsertCard, 0, 0},
                    {Seconds(4), Kind::SetInput, 1, 7}};
    BoardModel model(setup);
    EXPECT_EQ(model.board.NextEvent(), Seconds(1));
    model.Wait(1000);
    EXPECT_FALSE(model.board.card.present);
    model.Wait(5000);
    EXPECT_TRUE(model.board.card.present);
    EXPECT_EQ(model.board.WallTime(), Seconds(6 - 3600));
    EXPECT_TRUE(model.board.lines.At(7).level);
    EXPECT_EQ(model.board.NextEvent(), sim::kNever);
    EXPECT_EQ(model.told,
              (std::vector<std::string>{"1000 card removed", "2000 card inserted",
                                        "3000 clock set by -3600 s", "4000 input A7 1"}));
}

TEST(World, MeddlesWithSampleNoiseLockAndFlag) {
    BoardSetup setup;
    setup.pump.onFlag = true;
    setup.events = {{Seconds(1), Kind::SetNextSample, 0, 0, 0.8},
                    {Seconds(2), Kind::SetNoise, 0, 0, 40.0},
                    {Seconds(3), Kind::LockCard},
                    {Seconds(4), Kind::ShowFlag, 0},
                    {Seconds(5), Kind::ShowFlag, 1},
                    {Seconds(6), Kind::UnlockCard}};
    BoardModel model(setup);
    EXPECT_FALSE(model.HomeSensor()) << "low: the flag is in it";
    model.Wait(4'000);
    EXPECT_TRUE(model.HomeSensor());
    EXPECT_TRUE(model.board.card.writeProtected);
    EXPECT_EQ(model.board.DetectorNoise(), 40.0);
    EXPECT_EQ(model.board.cell.NextAbsorbance(), 0.8);
    model.Wait(2'000);
    EXPECT_FALSE(model.HomeSensor());
    EXPECT_FALSE(model.board.card.writeProtected);
    EXPECT_EQ(model.told, (std::vector<std::string>{
                              "1000 sample next 0.8", "2000 detector noise 40", "3000 card locked",
                              "4000 flag blocked", "4000 flag leaves the sensor", "5000 flag free",
                              "5000 flag enters the sensor", "6000 card unlocked"}));
}

TEST(World, NeverGoesBack) {
    BoardModel model;
    model.Wait(5);
    model.board.AdvanceTo(Milliseconds(3));
    EXPECT_EQ(model.board.Now(), Milliseconds(5));
    bool acted = false;
    model.board.At(Milliseconds(1), [&] { acted = true; });
    model.board.AdvanceTo(Milliseconds(5));
    EXPECT_TRUE(acted) << "what was due in the past is due now";
}

TEST(Start, ShowsWhatTheScenarioLeaves) {
    BoardSetup setup;
    setup.lines.high = {"C3"};
    setup.lines.exported = {"B15"};
    setup.channels.exported = {3};
    setup.card.present = false;
    const BoardModel model(setup);
    EXPECT_TRUE(model.board.lines.At(2 * 32 + 3).level);
    EXPECT_TRUE(model.board.lines.At(47).exported);
    EXPECT_TRUE(model.board.pwm.At(3).exported);
    EXPECT_FALSE(model.board.card.present);
}

} // namespace
} // namespace tavrelin
