#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::Texts;
using sim::ThreadOrder;

Scenario MountedCard() {
    Scenario scenario;
    scenario.board.card.mounted = true;
    return scenario;
}

// Every worker; the pump has half a turn to go.
const Step kFullStep = {.angle = 90.0F,
                        .speed = 90,
                        .duration = 500,
                        .led = false,
                        .stirring = true,
                        .sampling = true,
                        .valve = true};

TEST(StepOrder, OfAFullStepIsFixedFromTheFirstStartToTheLastJoin) {
    Instrument instrument(MountedCard());
    instrument.SetLastPumpAngle(270.0F);
    instrument.Run(kFullStep);
    EXPECT_EQ(
        Deeds(instrument.board),
        (Texts{
            // starts: reagent delivery, LED, valve, stirring, monitoring
            "thread 1: thread-start - 2", "thread 1: thread-start - 3",
            "thread 1: thread-start - 4", "thread 1: thread-start - 5",
            "thread 1: thread-start - 6",
            // reagent delivery: full current, chip on, 1600 Hz
            "thread 2: write A4/value \"1\"", "thread 2: write A5/value \"1\"",
            "thread 2: write A6/value \"1\"", "thread 2: write A2/value \"0\"",
            "thread 2: read pwm1/enable \"0\\n\"", "thread 2: write pwm1/duty_cycle \"0\" EINVAL",
            "thread 2: write pwm1/period \"625000\"", "thread 2: write pwm1/duty_cycle \"312500\"",
            "thread 2: write pwm1/enable \"1\"", "thread 2: sleep - 500000 us",
            // LED off
            "thread 3: read pwm0/enable \"1\\n\"", "thread 3: write pwm0/enable \"0\"",
            "thread 3: thread-end - -",
            // valve open
            "thread 4: read pwm3/enable \"0\\n\"", "thread 4: write pwm3/duty_cycle \"0\" EINVAL",
            "thread 4: write pwm3/period \"1000000\"",
            "thread 4: write pwm3/duty_cycle \"1000000\"", "thread 4: write pwm3/enable \"1\"",
            "thread 4: thread-end - -",
            // stirrer on at 640 Hz
            "thread 5: write B15/value \"0\"", "thread 5: read pwm2/enable \"0\\n\"",
            "thread 5: write pwm2/duty_cycle \"0\" EINVAL",
            "thread 5: write pwm2/period \"1562500\"", "thread 5: write pwm2/duty_cycle \"781250\"",
            "thread 5: write pwm2/enable \"1\"", "thread 5: sleep - 500000 us",
            // two conversions of a dark detector, the first after 250 ms
            "thread 6: write spi a080", "thread 6: sleep - 250000 us",
            "thread 6: read spi 2009c400", "thread 6: write spi a080",
            "thread 6: sleep - 250000 us",
            // after 500 ms the pump stops and is braked
            "thread 2: write pwm1/enable \"0\"", "thread 2: write A2/value \"1\"",
            "thread 2: write A4/value \"0\"", "thread 2: write A5/value \"0\"",
            "thread 2: write A6/value \"0\"", "thread 2: write A2/value \"0\"",
            "thread 2: thread-end - -",
            // the stirrer stops
            "thread 5: write pwm2/enable \"0\"", "thread 5: write B15/value \"1\"",
            "thread 5: thread-end - -",
            // the samples go to the log
            "thread 6: read spi 2009c400", "thread 6: open card/2026-03-07_logfile.csv ok",
            "thread 6: write card/2026-03-07_logfile.csv "
            "\"2026-03-07 09:0:0,   20000,Any Step,,\\n"
            "2026-03-07 09:0:0,   20000,Any Step,,\\n\"",
            "thread 6: close card/2026-03-07_logfile.csv ok", "thread 6: thread-end - -",
            // joins: stirring, valve, monitoring, LED, reagent delivery
            "thread 1: join - 5", "thread 1: join - 4", "thread 1: join - 6", "thread 1: join - 3",
            "thread 1: join - 2"}));
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
    scenario.threadOrder = ThreadOrder::Seeded;
    sim::RunOptions options;
    options.seed = static_cast<std::uint64_t>(GetParam());
    Instrument instrument(scenario, options);
    instrument.SetLastPumpAngle(270.0F);
    const StepOutcome outcome = instrument.Run(kFullStep);
    Texts ofTheStep = Happenings(instrument.board);
    std::erase_if(ofTheStep, [](const std::string& happening) {
        return happening.rfind("thread 1: ", 0) != 0;
    });
    EXPECT_EQ(ofTheStep,
              (Texts{"thread 1: thread-start - 2", "thread 1: thread-start - 3",
                     "thread 1: thread-start - 4", "thread 1: thread-start - 5",
                     "thread 1: thread-start - 6", "thread 1: join - 5", "thread 1: join - 4",
                     "thread 1: join - 6", "thread 1: join - 3", "thread 1: join - 2"}));
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, (std::array<bool, 6>{true, true, true, true, true, true}));
    EXPECT_EQ(outcome.boardTime, sim::Milliseconds(500));
    EXPECT_EQ(instrument.board.Model().shaft.StepsTurned(instrument.board.Now()), 800);
}

INSTANTIATE_TEST_SUITE_P(Seeds, StepOrderWithSeed, testing::Range(1, 13));

} // namespace
} // namespace tavrelin
