#include "simulator/launcher/Summary.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <sstream>
#include <unistd.h>

namespace sim {
namespace {

/// What the dynamic loader ends with when a library is missing.
constexpr int kNotLoaded = 127;

std::string Moment(const RunReport& report) {
    char time[48];
    std::snprintf(time, sizeof time, ", at %.3f s of board time",
                  static_cast<double>(report.boardTime.load()) / 1e9);
    const std::uint64_t steps = report.steps;
    return (steps == 0 ? "before the first step" : "in step " + std::to_string(steps)) + time;
}

Outcome MakeOutcome(ExitStatus status, const std::string& word, const std::string& line) {
    return {status, "simulate: " + line, word};
}

/// A pipe's reader has closed its end.
bool ReaderIsGone() {
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    return poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0;
}

Outcome ReaderWentAway(const RunReport& report) {
    return MakeOutcome(static_cast<ExitStatus>(128 + SIGPIPE), "reader went away",
                       "the reader of standard output went away " + Moment(report));
}

Outcome JudgeExit(int status, const RunReport& report, const LauncherOptions& options) {
    const std::string text = report.text;
    switch (report.ending.load()) {
    case Ending::LimitReached:
        return {ExitStatus::AsAsked, "", "limit reached: " + text};
    case Ending::PowerCut:
        return {ExitStatus::AsAsked, "", "power cut"};
    case Ending::Deadlock:
        return MakeOutcome(ExitStatus::Deadlock, "deadlock",
                           "deadlock " + Moment(report) + ": " + text);
    case Ending::Spinning:
        return MakeOutcome(ExitStatus::RealTimeLimit, "spinning",
                           "the program works on without a call " + Moment(report) + ": " + text);
    case Ending::Stalled: {
        char span[32];
        std::snprintf(span, sizeof span, "%g",
                      static_cast<double>(options.run.limits.stall) / 3'600e9);
        return MakeOutcome(ExitStatus::Deadlock, "stalled",
                           std::string("no step for ") + span + " board hours (--stall sets it) " +
                               Moment(report) + ": " + text);
    }
    case Ending::Unmodelled:
        return MakeOutcome(ExitStatus::Unmodelled, "unmodelled call",
                           "the simulated board does not model " + text + " (" + Moment(report) +
                               ")");
    case Ending::OutputLost:
        return ReaderIsGone() ? ReaderWentAway(report)
                              : MakeOutcome(ExitStatus::CannotStart, "output lost",
                                            "standard output: " + text + " " + Moment(report));
    case Ending::BadScenario:
        return MakeOutcome(ExitStatus::BadScenario, "bad scenario", text);
    case Ending::Running:
    case Ending::Exited:
        break;
    }
    if (status != 0) {
        return MakeOutcome(ExitStatus::ProgramFailed, "program failed",
                           "the program ended with status " + std::to_string(status) + " " +
                               Moment(report));
    }
    return {ExitStatus::AsAsked, "", "program ended"};
}

void AddFootprint(std::ostream& out, const char* name, const Footprint& footprint) {
    out << "\n[" << name << "]\n"
        << "heap_bytes = " << footprint.heapBytes << "\n"
        << "resident_bytes = " << footprint.residentBytes << "\n"
        << "board_handles = " << footprint.boardHandles << "\n"
        << "host_descriptors = " << footprint.hostDescriptors << "\n"
        << "threads = " << footprint.threads << "\n"
        << "mappings = " << footprint.mappings << "\n";
}

template <typename Figure>
void AddCourse(std::ostream& out, const char* name, const RunReport& report, Figure figure) {
    out << name << " = [";
    for (std::size_t i = 0; i < report.footprintsTaken; ++i) {
        out << (i == 0 ? "" : ", ") << report.footprints[i].*figure;
    }
    out << "]\n";
}

/// The figures of all footprints.
void AddCourses(std::ostream& out, const RunReport& report) {
    out << "\n[footprints]\n";
    AddCourse(out, "heap_bytes", report, &Footprint::heapBytes);
    AddCourse(out, "resident_bytes", report, &Footprint::residentBytes);
    AddCourse(out, "board_handles", report, &Footprint::boardHandles);
    AddCourse(out, "host_descriptors", report, &Footprint::hostDescriptors);
    AddCourse(out, "threads", report, &Footprint::threads);
    AddCourse(out, "mappings", report, &Footprint::mappings);
}

/// "function bytes" lines as a table.
void AddStacks(std::ostream& out, const char* lines) {
    std::istringstream stacks(lines);
    out << (*lines != '\0' ? "\n[stacks]\n" : "");
    for (std::string function, bytes; stacks >> function >> bytes;) {
        out << "\"" << function << "\" = " << bytes << "\n";
    }
}

/// A list that may have been cut, without what is not whole.
std::string WholeOnes(const std::string& text) {
    return text.substr(0, text.rfind(", "));
}

} // namespace

Outcome Judge(const ChildEnd& end, const RunReport& report, const LauncherOptions& options) {
    switch (end.kind) {
    case ChildEnd::Kind::NotStarted:
        return MakeOutcome(ExitStatus::CannotStart, "not started",
                           options.program.front() + ": " + std::strerror(end.value));
    case ChildEnd::Kind::TimedOut: {
        char limit[32];
        std::snprintf(limit, sizeof limit, "%g", options.realTime);
        return MakeOutcome(ExitStatus::RealTimeLimit, "real time limit",
                           std::string("limit of ") + limit + " s of real time passed " +
                               Moment(report) + " (--real-time sets it)");
    }
    case ChildEnd::Kind::Interrupted:
        return {static_cast<ExitStatus>(128 + end.value), "simulate: interrupted", "interrupted"};
    case ChildEnd::Kind::Signalled:
        if (report.ending == Ending::Unmodelled) {
            break; // by what the program had started
        }
        if (end.value == SIGPIPE && ReaderIsGone()) {
            return ReaderWentAway(report);
        }
        return MakeOutcome(ExitStatus::Crashed, "crashed",
                           std::string("the program crashed (SIG") + sigabbrev_np(end.value) +
                               ") " + Moment(report));
    case ChildEnd::Kind::Exited:
        break;
    }
    if (report.armed == 0 && options.debugger) {
        return {ExitStatus::AsAsked, "", "not run"};
    }
    if (report.armed == 0) {
        return MakeOutcome(
            ExitStatus::NotArmed, "not armed",
            end.value == kNotLoaded
                ? "the program's loader could not start it"
                : "the simulated board did not get under the program; it ran on this machine "
                  "itself");
    }
    return JudgeExit(end.value, report, options);
}

std::string Missing(const RunReport& report) {
    return WholeOnes(report.missing);
}

std::string SummaryText(const Outcome& outcome, const RunReport& report) {
    const std::string missing = Missing(report);
    std::ostringstream out;
    out << "end = \"" << outcome.word << "\"\n"
        << "status = " << static_cast<int>(outcome.status) << "\n"
        << "board_time_us = " << report.boardTime.load() / 1'000 << "\n"
        << "steps = " << report.steps.load() << "\n"
        << "measurements = " << report.measurements.load() << "\n"
        << "gate = " << (report.gated != 0 ? "true" : "false") << "\n"
        << (missing.empty() ? "" : "never_came = '''" + missing + "'''\n");
    if (report.choices[0] != '\0') {
        out << "\n[threads]\nchoices = [" << WholeOnes(report.choices)
            << "]\nsteps_preempted = " << report.stepsPreempted << "\n";
    }
    out << "\n[calls]\n";
    std::istringstream calls(report.calls);
    for (std::string name, count; calls >> name >> count;) {
        out << name << " = " << count << "\n";
    }
    AddFootprint(out, "at_step_200", report.footprints.front());
    AddFootprint(out, "at_last",
                 report.footprints[std::max<std::size_t>(report.footprintsTaken, 1) - 1]);
    AddCourses(out, report);
    AddStacks(out, report.stacks);
    out << report.faults;
    return out.str();
}

} // namespace sim
