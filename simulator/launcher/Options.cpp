#include "simulator/launcher/Options.h"

#include "simulator/run/RunRoot.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <functional>
#include <iostream>
#include <limits>

namespace sim {
namespace {

/// Texts as given, before they are looked at.
struct RawOptions {
    std::string pace = "max";
    std::string serve;
    std::string start;
    std::string ioCost = "board";
    double boardTime = 0.0;
    double realTime = -1.0;
    double stall = static_cast<double>(kDefaultStall) / 1e9;
};

constexpr std::uint64_t kMostCount = 1'000'000'000;
constexpr double kLeastPace = 1e-6;
constexpr double kMostPace = 1e9;

template <typename Number>
std::optional<Number> NumberOf(const std::string& text) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc{} && result.ptr == end ? std::optional<Number>{number}
                                                         : std::nullopt;
}

std::optional<double> PaceOf(const std::string& text) {
    if (text == "max") {
        return 0.0;
    }
    if (text == "real") {
        return 1.0;
    }
    const auto factor = NumberOf<double>(text);
    return factor && *factor >= kLeastPace && *factor <= kMostPace ? factor : std::nullopt;
}

std::string Instead(const std::string& wanted, const std::string& text) {
    return "takes " + wanted + ", not '" + text + "'";
}

/// Checks of a value: each gives what would do instead, or nothing when the value is right.
using Check = std::function<std::string(const std::string&)>;

Check WholeNumber(std::uint64_t least, std::uint64_t most) {
    return [=](const std::string& text) {
        const auto number = NumberOf<std::uint64_t>(text);
        return number && *number >= least && *number <= most
                   ? std::string()
                   : Instead("a whole number from " + std::to_string(least) + " to " +
                                 std::to_string(most),
                             text);
    };
}

/// least: the shortest span, as a text too.
Check SpanOfSeconds(double least, const std::string& shown) {
    return [=](const std::string& text) {
        constexpr double most = 9e9;
        const auto number = NumberOf<double>(text);
        return number && *number >= least && *number <= most
                   ? std::string()
                   : Instead("seconds from " + shown + " to 9000000000", text);
    };
}

std::string CheckPace(const std::string& text) {
    return PaceOf(text) ? "" : Instead("max, real or a factor from 0.000001 to 1000000000", text);
}

std::string CheckStart(const std::string& text) {
    return WallClock::Parse(text) ? "" : Instead("a time such as \"2026-03-07 09:00:00\"", text);
}

std::string CheckCost(const std::string& text) {
    return text == "none" || text == "board" ? "" : Instead("none or board", text);
}

std::string CheckPort(const std::string& text) {
    return text.empty() ? "" : WholeNumber(0, 65535)(text);
}

std::string CheckPath(const std::string& text) {
    const bool path = !text.empty() && text != "--" && text.find('\n') == std::string::npos;
    return path ? "" : Instead("a path", text);
}

/// What is wrong with a command line as a whole, in our words.
std::string ProblemOf(const CLI::App& app, const CLI::ParseError& error) {
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
        for (const std::string& extra : app.remaining()) {
            if (extra != "--") {
                return extra + ": no such option";
            }
        }
    }
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
        return "no program to run; name it after --";
    }
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
        const std::string text = error.what();
        const bool missing = text.find("missing") != std::string::npos;
        return text.substr(0, text.find(':')) + (missing ? ": needs a value" : ": given twice");
    }
    return error.what();
}

void Describe(CLI::App& app, LauncherOptions& options, RawOptions& raw) {
    app.footer(
        "The program's own output is shown unchanged. The run ends when the program does, or at "
        "the\n"
        "first limit reached.\n"
        "Exit status: 0 ended as asked, 2 wrong use, 3 bad scenario, 4 program ended with a "
        "status\n"
        "other than 0, 10 program crashed, 11 deadlock or no step for too long, 12 limit of real "
        "time passed, 13 call on "
        "a\n"
        "board path that the simulation does not model, 14 simulation not armed, 15 cannot start,\n"
        "or not write to the end, 129 to 143 interrupted.");
    const auto option = [&app](const char* name, auto& value, const char* type, const Check& check,
                               const char* text) {
        return app.add_option(name, value, text)->type_name(type)->check(check);
    };
    option("--scenario", options.scenarioFile, "FILE", CheckPath,
           "What the board is like and what befalls it (TOML); see docs/simulated-board.md");
    option("--seed", options.run.seed, "N",
           WholeNumber(0, std::numeric_limits<std::uint64_t>::max()),
           "Seed of the detector's noise and of seeded thread order")
        ->capture_default_str();
    option("--measurements", options.run.limits.measurements, "N", WholeNumber(1, kMostCount),
           "End after so many measurements");
    option("--steps", options.run.limits.steps, "N", WholeNumber(1, kMostCount),
           "End after so many steps");
    option("--calls", options.run.limits.calls, "N", WholeNumber(1, kMostCount),
           "End after so many calls to the board");
    option("--board-time", raw.boardTime, "SECONDS", SpanOfSeconds(1e-6, "0.000001"),
           "End after so many seconds of board time");
    option("--real-time", raw.realTime, "SECONDS", SpanOfSeconds(0.0, "0"),
           "Stop the program after so many seconds of real time, 0 for never (600 at pace max,\n"
           "else and with --serve or --gdb 0)");
    option("--stall", raw.stall, "SECONDS", SpanOfSeconds(0.0, "0"),
           "End a run of the instrument that begins no step for so long in board time, 0 for never")
        ->capture_default_str();
    option("--pace", raw.pace, "max|real|FACTOR", CheckPace,
           "Board time against real time: max, real or a factor")
        ->capture_default_str();
    option("--serve", raw.serve, "[PORT]", CheckPort,
           "Open the instrument in a browser, at pace real unless told otherwise: prints the\n"
           "address, on a port of this machine or on any free one, and stays until interrupted")
        ->expected(0, 1);
    app.add_flag("--gdb", options.debugger,
                 "Start gdb with the program; at a breakpoint board time stands still");
    option("--start", raw.start, "TIME", CheckStart,
           "Date and time on the board's clock at the start, in UTC\n"
           "(\"2026-03-07 09:00:00\")");
    option("--root", options.root, "DIR", CheckPath,
           "Keep the card's files in this new or empty folder (card/ below it); without it they\n"
           "go with the run");
    app.add_flag("--resume", options.resume,
                 "Begin with the card's files and the board as an earlier run left them in the\n"
                 "folder of --root, on the board's clock too unless --start sets it");
    option("--board", options.run.boardFile, "FILE", CheckPath,
           "Begin with what the program of an earlier run left on the board, as this file tells\n"
           "if it is there, and write into it what is left at the end");
    option("--events", options.run.eventsFile, "FILE", CheckPath,
           "Write a line for each operation on the board: microseconds of board time, thread,\n"
           "operation, path, data; - for standard output");
    app.add_flag("--every-call", options.run.everyCall,
                 "Tell in the events of each call on the board, before what comes of it");
    option("--vcd", options.run.vcdFile, "FILE", CheckPath,
           "Write the run as waveforms (value changes, IEEE 1364) for GTKWave, sigrok and others");
    option("--io-cost", raw.ioCost, "none|board", CheckCost,
           "Board time that calls take: none, or what a board needs")
        ->capture_default_str();
    option("--summary", options.summaryFile, "FILE", CheckPath,
           "Write how the run went: its end, board time, steps, calls, memory");
    app.add_option("PROGRAM", options.program, "The program and its arguments, after --")
        ->required()
        ->type_name("")
        ->expected(1, 1'000'000);
}

} // namespace

std::optional<LauncherOptions> ParseCommandLine(int argc, char** argv, int& exitStatus) {
    LauncherOptions options;
    RawOptions raw;
    CLI::App app("Runs a program on a simulated instrument board.", "simulate");
    app.positionals_at_end();
    Describe(app, options, raw);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const bool help = error.get_exit_code() == 0;
        if (help) {
            app.exit(error);
        } else {
            std::cerr << "simulate: " << ProblemOf(app, error)
                      << " (simulate --help explains every option)\n";
        }
        exitStatus = static_cast<int>(help ? ExitStatus::AsAsked : ExitStatus::WrongUse);
        return std::nullopt;
    }
    if (app.count("--serve") != 0) {
        if (!options.run.boardFile.empty()) {
            std::cerr
                << "simulate: --serve does not go with --board, whose file is another after the "
                   "run (simulate --help explains every option)\n";
            exitStatus = static_cast<int>(ExitStatus::WrongUse);
            return std::nullopt;
        }
        options.servePort = raw.serve.empty() ? 0 : *NumberOf<int>(raw.serve);
        raw.pace = app.count("--pace") == 0 ? "real" : raw.pace;
    }
    if (options.resume && options.root.empty()) {
        std::cerr << "simulate: --resume needs --root with the folder of an earlier run (simulate "
                     "--help explains every option)\n";
        exitStatus = static_cast<int>(ExitStatus::WrongUse);
        return std::nullopt;
    }
    if (!options.root.empty() && options.run.boardFile.empty() && app.count("--serve") == 0) {
        options.run.boardFile = RunRoot::BoardFileIn(options.root);
        options.run.keepWorld = true;
    }
    options.run.pace = *PaceOf(raw.pace);
    options.run.ioCosts = raw.ioCost == "board";
    if (!raw.start.empty()) {
        options.run.startTime = *WallClock::Parse(raw.start);
    } else if (options.resume) {
        options.run.startTime = RunRoot::ClockIn(options.root).value_or(WallClock::kDefaultStart);
    }
    if (raw.boardTime > 0.0) {
        options.run.limits.boardTime =
            static_cast<Nanoseconds>(std::llround(raw.boardTime * 1e6)) * 1'000;
    }
    if (raw.stall > 0.0) {
        options.run.limits.stall = static_cast<Nanoseconds>(std::llround(raw.stall * 1e6)) * 1'000;
    }
    options.realTime =
        raw.realTime >= 0.0
            ? raw.realTime
            : (options.run.pace == 0.0 && !options.servePort && !options.debugger ? 600.0 : 0.0);
    return options;
}

} // namespace sim
