#include "simulator/launcher/Summary.h"

#include "simulator/run/Simulation.h"

#include <cstdio>
#include <cstring>
#include <sstream>

namespace sim {
namespace {

std::string moment(const RunReport& report) {
    char time[48];
    std::snprintf(time, sizeof time, ", at %.3f s of board time",
                  static_cast<double>(report.boardTime.load()) / 1e9);
    const std::uint64_t steps = report.steps;
    return (steps == 0 ? "before the first step" : "in step " + std::to_string(steps)) + time;
}

Outcome outcome(ExitStatus status, const std::string& word, const std::string& line) {
    return {status, "simulate: " + line, word};
}

Outcome judgeExit(int status, const RunReport& report) {
    const std::string text = report.text;
    switch (static_cast<Ending>(report.ending.load())) {
    case Ending::limitReached:
        return {ExitStatus::asAsked, "", "limit reached: " + text};
    case Ending::deadlock:
        return outcome(ExitStatus::deadlock, "deadlock",
                       "deadlock " + moment(report) + ": " + text);
    case Ending::unmodelled:
        return outcome(ExitStatus::unmodelled, "unmodelled call",
                       "the simulated board does not model " + text + " (" + moment(report) + ")");
    case Ending::running:
    case Ending::exited:
        break;
    }
    if (status != 0) {
        return outcome(ExitStatus::programFailed, "program failed",
                       "the program ended with status " + std::to_string(status) + " " +
                           moment(report));
    }
    return {ExitStatus::asAsked, "", "program ended"};
}

void addFootprint(std::ostream& out, const char* name, const Footprint& footprint) {
    out << "\n[" << name << "]\n"
        << "heap_bytes = " << footprint.heapBytes << "\n"
        << "resident_bytes = " << footprint.residentBytes << "\n"
        << "board_handles = " << footprint.boardHandles << "\n"
        << "host_descriptors = " << footprint.hostDescriptors << "\n"
        << "threads = " << footprint.threads << "\n";
}

} // namespace

Outcome judge(const ChildEnd& end, const RunReport& report, const LauncherOptions& options) {
    switch (end.kind) {
    case ChildEnd::Kind::notStarted:
        return outcome(ExitStatus::cannotStart, "not started",
                       options.program.front() + ": " + std::strerror(end.value));
    case ChildEnd::Kind::timedOut: {
        char limit[32];
        std::snprintf(limit, sizeof limit, "%g", options.realTime);
        return outcome(ExitStatus::realTimeLimit, "real time limit",
                       std::string("limit of ") + limit + " s of real time passed " +
                           moment(report) + " (--real-time sets it)");
    }
    case ChildEnd::Kind::interrupted:
        return {static_cast<ExitStatus>(128 + end.value), "simulate: interrupted", "interrupted"};
    case ChildEnd::Kind::signalled:
        return outcome(ExitStatus::crashed, "crashed",
                       std::string("the program crashed (SIG") + sigabbrev_np(end.value) + ") " +
                           moment(report));
    case ChildEnd::Kind::exited:
        break;
    }
    if (report.armed == 0) {
        return outcome(
            ExitStatus::notArmed, "not armed",
            "the simulated board did not get under the program; it ran on this machine itself");
    }
    return judgeExit(end.value, report);
}

std::string summaryText(const Outcome& outcome, const RunReport& report) {
    std::ostringstream out;
    out << "end = \"" << outcome.word << "\"\n"
        << "status = " << static_cast<int>(outcome.status) << "\n"
        << "board_time_us = " << report.boardTime.load() / 1'000 << "\n"
        << "steps = " << report.steps.load() << "\n"
        << "measurements = " << report.measurements.load() << "\n"
        << "\n[calls]\n";
    std::istringstream calls(report.calls);
    for (std::string name, count; calls >> name >> count;) {
        out << name << " = " << count << "\n";
    }
    addFootprint(out, "at_step_200", report.early);
    addFootprint(out, "at_last", report.late);
    return out.str();
}

} // namespace sim
