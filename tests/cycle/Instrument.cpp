#include "tests/cycle/Instrument.h"

#include "cycle/OpticalMonitor.h"
#include "cycle/ReagentDelivery.h"
#include "cycle/StepExecution.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace tavrelin {

Instrument::Instrument(const sim::Scenario& scenario, const sim::RunOptions& options)
    : board(scenario, options) {
    cycle.Init();
    cycle.Valve()->Init();
    board.Forget();
}

StepRequest Instrument::RequestFor(const MeasurementState& step) {
    return {.state = step,
            .samples = &samples,
            .stirrer = cycle.Stirrer(),
            .reagentPump = cycle.ReagentPump(),
            .led = cycle.Led(),
            .externalAdc = cycle.ExternalAdc(),
            .valve = cycle.Valve()};
}

bool Instrument::Sample(std::uint32_t duration, const std::string& description) {
    const StepRequest request = RequestFor({.Duration = duration, .Description = description});
    return MonitorOptics(&request);
}

// A delivery that cannot lock the motor has been at its target all the same.
void Instrument::SetLastPumpAngle(float angle) {
    const StepRequest request = RequestFor({.Duration = 1, .MotorAngle = angle, .MotorSpeed = 1});
    board.Fail("pthread_mutex_lock", "", EINVAL);
    ConsoleOf([&] { DeliverReagent(&request); });
    board.StopFailing();
    board.Forget();
}

StepOutcome RunStep(sim::SimulatedBoard& board, MeasurementCycle& cycle,
                    const MeasurementState& step, bool flags, std::uint32_t count) {
    StepOutcome outcome;
    std::array<bool, 6> slots{};
    const sim::Nanoseconds begin = board.Now();
    outcome.console = ConsoleOf([&] {
        outcome.success = doStepRequest(cycle, step, flags ? slots.data() : nullptr, count);
    });
    outcome.boardTime = board.Now() - begin;
    for (const bool slot : slots) {
        outcome.slots += slot ? 'X' : 'o';
    }
    return outcome;
}

sim::Texts Picked(const sim::SimulatedBoard& board, const sim::Texts& texts) {
    sim::Texts picked = Deeds(board);
    std::erase_if(picked, [&](const std::string& happening) {
        return std::none_of(texts.begin(), texts.end(), [&](const std::string& text) {
            return happening.find(text) != std::string::npos;
        });
    });
    return picked;
}

} // namespace tavrelin
