#include "tests/cycle/Instrument.h"

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::Texts;
using sim::ThreadOrder;

Scenario MountedCard() {
    return Where(&sim::BoardSetup::card, {.mounted = true});
}

// Every worker; the pump has half a turn to go.
const MeasurementState kFullStep = {.Duration = 500,
                                    .StirringStatus = true,
                                    .ADCMonitorStatus = true,
                                    .MotorAngle = 90.0F,
                                    .MotorSpeed = 90,
                                    .ValveStatus = true,
                                    .Description = "Any Step"};

TEST(StepOrder, OfAFullStepIsFixedFromTheFirstStartToTheLastJoin) {
    Instrument instrument(MountedCard());
    instrument.SetLastPumpAngle(270.0F);
    instrument.Run(kFullStep);
    EXPECT_EQ(Picked(instrument.board, {"thread-", "join", "sleep", "enable", "spi", "card/"}),
              (Texts{// starts: reagent delivery, LED, valve, stirring, monitoring
                     "thread 1: thread-start - 2", "thread 1: thread-start - 3",
                     "thread 1: thread-start - 4", "thread 1: thread-start - 5",
                     "thread 1: thread-start - 6",
                     // pump on, LED off, valve open, stirrer on
                     "thread 2: read pwm1/enable \"0\\n\"", "thread 2: write pwm1/enable \"1\"",
                     "thread 2: sleep - 500000 us", "thread 3: read pwm0/enable \"1\\n\"",
                     "thread 3: write pwm0/enable \"0\"", "thread 3: thread-end - -",
                     "thread 4: read pwm3/enable \"0\\n\"", "thread 4: write pwm3/enable \"1\"",
                     "thread 4: thread-end - -", "thread 5: read pwm2/enable \"0\\n\"",
                     "thread 5: write pwm2/enable \"1\"", "thread 5: sleep - 500000 us",
                     // two conversions of a dark detector, the first after 250 ms
                     "thread 6: write spi a080", "thread 6: sleep - 250000 us",
                     "thread 6: read spi 2009c400", "thread 6: write spi a080",
                     "thread 6: sleep - 250000 us",
                     // after 500 ms pump and stirrer stop, and the samples go to the log
                     "thread 2: write pwm1/enable \"0\"", "thread 2: thread-end - -",
                     "thread 5: write pwm2/enable \"0\"", "thread 5: thread-end - -",
                     "thread 6: read spi 2009c400", "thread 6: open card/2026-03-07_logfile.csv ok",
                     "thread 6: write card/2026-03-07_logfile.csv "
                     "\"2026-03-07 09:0:0,   20000,Any Step,,\\n"
                     "2026-03-07 09:0:0,   20000,Any Step,,\\n\"",
                     "thread 6: close card/2026-03-07_logfile.csv ok", "thread 6: thread-end - -",
                     // joins: stirring, valve, monitoring, LED, reagent delivery
                     "thread 1: join - 5", "thread 1: join - 4", "thread 1: join - 6",
                     "thread 1: join - 3", "thread 1: join - 2"}));
}

TEST(StepOrder, OfARestingStepIsLedValveValveLed) {
    Instrument instrument;
    instrument.Run({});
    EXPECT_EQ(Happenings(instrument.board),
              (Texts{"thread 1: thread-start - 2", "thread 1: thread-start - 3",
                     "thread 2: read pwm0/enable \"1\\n\"", "thread 2: write pwm0/enable \"0\"",
                     "thread 2: thread-end - -", "thread 3: write pwm3/enable \"0\" EINVAL",
                     "thread 3: thread-end - -", "thread 1: join - 3", "thread 1: join - 2"}));
}

class StepOrderWithSeed : public testing::TestWithParam<int> {};

TEST_P(StepOrderWithSeed, OfStartsAndJoinsDoesNotDependOnWhoRunsFirst) {
    Scenario scenario = MountedCard();
    scenario.threads.order = ThreadOrder::Seeded;
    sim::RunOptions options;
    options.seed = static_cast<std::uint64_t>(GetParam());
    Instrument instrument(scenario, options);
    instrument.SetLastPumpAngle(270.0F);
    const StepOutcome outcome = instrument.Run(kFullStep);
    EXPECT_EQ(Picked(instrument.board, {"thread 1: "}),
              (Texts{"thread 1: thread-start - 2", "thread 1: thread-start - 3",
                     "thread 1: thread-start - 4", "thread 1: thread-start - 5",
                     "thread 1: thread-start - 6", "thread 1: join - 5", "thread 1: join - 4",
                     "thread 1: join - 6", "thread 1: join - 3", "thread 1: join - 2"}));
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, "XXXXXX");
    EXPECT_EQ(outcome.boardTime, sim::Milliseconds(500));
    EXPECT_EQ(instrument.StepsTurned(), 800);
}

INSTANTIATE_TEST_SUITE_P(Seeds, StepOrderWithSeed, testing::Range(1, 13));

} // namespace
} // namespace tavrelin
