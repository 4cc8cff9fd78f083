#include "tests/cycle/Instrument.h"

#include "cycle/ReagentDelivery.h"
#include "cycle/StepExecution.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <iterator>
#include <utility>

namespace tavrelin {

namespace {

std::string WithoutQuotes(std::string text) {
    std::erase(text, '"');
    return text;
}

} // namespace

Instrument::Instrument(const sim::Scenario& scenario, const sim::RunOptions& options)
    : board(scenario, options) {
    cycle.Init();
    cycle.Valve()->Init();
    board.Forget();
}

// A delivery that cannot lock the motor has been at its target all the same.
void Instrument::SetLastPumpAngle(float angle) {
    StepRequest request;
    request.MotorAngle = angle;
    request.MotorSpeed = 1;
    request.Duration = 1;
    request.reagentPump = cycle.ReagentPump();
    board.Fail("pthread_mutex_lock", "", EINVAL);
    testing::internal::CaptureStdout();
    DeliverReagent(&request);
    std::cout.flush();
    testing::internal::GetCapturedStdout();
    board.StopFailing();
    board.Forget();
}

StepOutcome RunStep(sim::SimulatedBoard& board, MeasurementCycle& cycle, const Step& step,
                    bool flags, std::uint32_t count) {
    StepOutcome outcome;
    const sim::Nanoseconds begin = board.Now();
    testing::internal::CaptureStdout();
    outcome.success =
        doStepRequest(cycle, step.angle, step.speed, step.findStart, step.duration, step.led,
                      step.stirring, step.srvd, step.sampling, step.valve, step.description,
                      flags ? outcome.slots.data() : nullptr, count);
    std::cout.flush();
    outcome.console = testing::internal::GetCapturedStdout();
    outcome.boardTime = board.Now() - begin;
    return outcome;
}

sim::Texts Writes(const sim::SimulatedBoard& board) {
    sim::Texts writes;
    for (const std::string& event : board.Events()) {
        const std::string operation = event.substr(0, event.find(' '));
        if (operation == "write" || operation == "ioctl") {
            writes.push_back(WithoutQuotes(ShortOperation(event).substr(operation.size() + 1)));
        }
    }
    return writes;
}

} // namespace tavrelin
