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

std::string ShortPath(const std::string& path) {
    static const std::array<std::pair<std::string, std::string>, 6> names = {{
        {"/sys/class/gpio/pio", ""},
        {"/sys/class/gpio/", "gpio/"},
        {"/sys/class/pwm/pwmchip0/pwm", "pwm"},
        {"/sys/class/pwm/pwmchip0/", "pwmchip0/"},
        {"/mnt/sd-card/", "card/"},
        {"/dev/spidev32765.1", "spi"},
    }};
    for (const auto& [from, to] : names) {
        if (path.rfind(from, 0) == 0) {
            return to + path.substr(from.size());
        }
    }
    return path;
}

std::string ShortOperation(const std::string& line) {
    const std::size_t path = line.find(' ') + 1;
    const std::size_t data = line.find(' ', path);
    return line.substr(0, path) + ShortPath(line.substr(path, data - path)) + line.substr(data);
}

std::string WithoutQuotes(std::string text) {
    std::erase(text, '"');
    return text;
}

} // namespace

Instrument::Instrument(const sim::Scenario& scenario, const sim::RunOptions& options)
    : board(scenario, options) {
    cycle.Init();
    cycle.valve()->Init();
    board.forget();
}

// A delivery that cannot lock the motor has been at its target all the same.
void Instrument::SetLastPumpAngle(float angle) {
    StepRequest request;
    request.MotorAngle = angle;
    request.MotorSpeed = 1;
    request.Duration = 1;
    request.reagentPump = cycle.reagentPump();
    board.fail("pthread_mutex_lock", "", EINVAL);
    testing::internal::CaptureStdout();
    DeliverReagent(&request);
    std::cout.flush();
    testing::internal::GetCapturedStdout();
    board.stopFailing();
    board.forget();
}

StepOutcome RunStep(sim::SimulatedBoard& board, MeasurementCycle& cycle, const Step& step,
                    bool flags, std::uint32_t count) {
    StepOutcome outcome;
    const sim::Nanoseconds begin = board.now();
    testing::internal::CaptureStdout();
    outcome.success =
        doStepRequest(cycle, step.angle, step.speed, step.findStart, step.duration, step.led,
                      step.stirring, step.srvd, step.sampling, step.valve, step.description,
                      flags ? outcome.slots.data() : nullptr, count);
    std::cout.flush();
    outcome.console = testing::internal::GetCapturedStdout();
    outcome.boardTime = board.now() - begin;
    return outcome;
}

sim::Texts Happenings(const sim::SimulatedBoard& board) {
    sim::Texts happenings;
    for (const std::string& event : board.timedEvents()) {
        const std::string line = event.substr(event.find(' ') + 1);
        const std::string thread = line.substr(0, line.find(' '));
        happenings.push_back((thread == "0" ? "board: " : "thread " + thread + ": ") +
                             ShortOperation(line.substr(thread.size() + 1)));
    }
    return happenings;
}

sim::Texts Deeds(const sim::SimulatedBoard& board) {
    sim::Texts deeds = Happenings(board);
    std::erase_if(deeds, [](const std::string& happening) {
        return happening.find(": stat ") != std::string::npos ||
               happening.find(": setmntent ") != std::string::npos;
    });
    return deeds;
}

sim::Texts Writes(const sim::SimulatedBoard& board) {
    sim::Texts writes;
    for (const std::string& event : board.events()) {
        const std::string operation = event.substr(0, event.find(' '));
        if (operation == "write" || operation == "ioctl") {
            writes.push_back(WithoutQuotes(ShortOperation(event).substr(operation.size() + 1)));
        }
    }
    return writes;
}

int CountOf(const sim::SimulatedBoard& board, const std::string& text) {
    const sim::Texts happenings = Happenings(board);
    return static_cast<int>(
        std::count_if(happenings.begin(), happenings.end(), [&](const std::string& happening) {
            return happening.find(text) != std::string::npos;
        }));
}

sim::RunOptions StartingAt(const std::string& wallTime) {
    sim::RunOptions options;
    options.startTime = sim::WallClock::parse(wallTime).value();
    return options;
}

std::vector<std::uint32_t> WordsFor(const std::vector<std::int32_t>& readings) {
    std::vector<std::uint32_t> words;
    std::transform(readings.begin(), readings.end(), std::back_inserter(words),
                   sim::Converter::resultWord);
    return words;
}

} // namespace tavrelin
