#include "simulator/scenario/ScenarioFile.h"

#include "simulator/scenario/FaultTable.h"
#include "simulator/scenario/KernelTables.h"
#include "simulator/scenario/TomlTable.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <map>
#include <utility>

namespace sim {
namespace {

constexpr double kLeastAbsorbance = -2.0;
constexpr double kMostAbsorbance = 6.0;
constexpr double kMostNoise = 1e7;

/// One moment at which the world does something; the caller reads what it is.
WorldEvent ReadEvent(TomlTable& table, WorldEvent::Kind kind,
                     std::initializer_list<const char*> needed) {
    WorldEvent event;
    event.kind = kind;
    for (const char* key : needed) {
        table.Require(key);
    }
    ReadMoment(table, event.at, event.when);
    table.Table("on", [&](TomlTable& call) { ReadCallOfEvent(call, event.when); });
    const int given =
        table.Has("at") + table.Has("at_step") + table.Has("at_measurement") + table.Has("on");
    if (given == 0) {
        table.Require("at");
    } else if (given > 1) {
        table.Fail("at", "an event has one of at, at_step, at_measurement and on");
    }
    return event;
}

void ReadPowerCut(TomlTable& table, BoardSetup& board) {
    const WorldEvent event = ReadEvent(table, WorldEvent::Kind::CutPower, {"do"});
    std::string action = "power-cut";
    table.Read("do", action);
    if (action != "power-cut") {
        table.Fail("do", R"(takes "power-cut")");
    }
    board.events.push_back(event);
}

/// The same, of something that a number tells.
void ReadNumberEvents(TomlTable& table, BoardSetup& board, WorldEvent::Kind kind, const char* key,
                      double least, double most) {
    table.Tables("event", [&](TomlTable& entry) {
        WorldEvent event = ReadEvent(entry, kind, {key});
        entry.Read(key, event.number, least, most);
        board.events.push_back(event);
    });
}

void ReadSample(TomlTable& table, BoardSetup& board) {
    table.ReadNumbers("absorbance", board.absorbances, kLeastAbsorbance, kMostAbsorbance);
    ReadNumberEvents(table, board, WorldEvent::Kind::SetNextSample, "absorbance", kLeastAbsorbance,
                     kMostAbsorbance);
}

void ReadDetector(TomlTable& table, BoardSetup& board) {
    table.ReadInteger("dark", board.detector.dark, -16'777'216, 16'777'215);
    table.ReadInteger("reference", board.detector.reference, -16'777'216, 16'777'215);
    table.Read("noise", board.detector.noise, 0.0, kMostNoise);
    ReadNumberEvents(table, board, WorldEvent::Kind::SetNoise, "noise", 0.0, kMostNoise);
}

void ReadCardEvent(TomlTable& table, BoardSetup& board) {
    using Kind = WorldEvent::Kind;
    static const std::map<std::string, Kind> kinds{{"insert", Kind::InsertCard},
                                                   {"remove", Kind::RemoveCard},
                                                   {"lock", Kind::LockCard},
                                                   {"unlock", Kind::UnlockCard}};
    std::string action;
    table.Read("do", action);
    const auto kind = kinds.find(action);
    const bool known = kind != kinds.end();
    board.events.push_back(ReadEvent(table, known ? kind->second : Kind::RemoveCard, {"do"}));
    if (!known) {
        table.Fail("do", R"(takes "insert", "remove", "lock" or "unlock")");
    }
}

void ReadCard(TomlTable& table, BoardSetup& board) {
    CardState& card = board.card;
    table.Read("present", card.present);
    table.Read("mounted", card.mounted);
    table.Read("partition", card.partitioned);
    table.Read("fat", card.fat);
    table.Read("write_protected", card.writeProtected);
    table.Read("read_only", card.readOnly);
    table.Read("mount_point", card.mountPointExists);
    table.ReadInteger("free_bytes", card.freeBytes, 0, 1LL << 50);
    if (card.mounted && !(card.present && card.partitioned && card.fat && card.mountPointExists)) {
        table.Fail("mounted", "a mounted card is present, has a partition with a FAT file system, "
                              "and a mount point");
    }
    table.Tables("event", [&](TomlTable& event) { ReadCardEvent(event, board); });
}

void ReadPump(TomlTable& table, BoardSetup& board) {
    table.Read("flag_seen", board.pump.flagSeen);
    table.Read("on_flag_at_start", board.pump.onFlag);
    table.Tables("event", [&](TomlTable& entry) {
        WorldEvent event = ReadEvent(entry, WorldEvent::Kind::ShowFlag, {"flag_seen"});
        bool seen = true;
        entry.Read("flag_seen", seen);
        event.value = seen ? 1 : 0;
        board.events.push_back(event);
    });
}

void ReadClock(TomlTable& table, Scenario& scenario) {
    table.Read("zone", scenario.zone);
    if (!scenario.zone.empty() &&
        !std::filesystem::is_regular_file("/usr/share/zoneinfo/" + scenario.zone)) {
        table.Fail("zone", "takes a time zone of this machine, such as \"Europe/Berlin\"");
    }
    table.Tables("jump", [&](TomlTable& jump) {
        WorldEvent event = ReadEvent(jump, WorldEvent::Kind::JumpClock, {"seconds"});
        jump.ReadInteger("seconds", event.value, -2'000'000'000, 2'000'000'000);
        scenario.board.events.push_back(event);
    });
}

void CheckLineNames(TomlTable& table, std::string_view key, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (!Lines::Number(name)) {
            table.Fail(key, "no line is named \"" + name + "\"; lines are A0 to D31");
        }
    }
}

void ReadLines(TomlTable& table, BoardSetup& board) {
    table.ReadStrings("exported", board.lines.exported);
    table.ReadStrings("high", board.lines.high);
    CheckLineNames(table, "exported", board.lines.exported);
    CheckLineNames(table, "high", board.lines.high);
    table.Tables("event", [&](TomlTable& entry) {
        WorldEvent event = ReadEvent(entry, WorldEvent::Kind::SetInput, {"line", "level"});
        entry.ReadInteger("level", event.value, 0, 1);
        std::string name;
        entry.Read("line", name);
        CheckLineNames(entry, "line", {name});
        event.line = Lines::Number(name).value_or(0);
        board.events.push_back(event);
    });
}

void ReadThreads(TomlTable& table, Scenario& scenario) {
    ThreadSetup& threads = scenario.threads;
    table.Read("stacks", scenario.measureStacks);
    std::string order = "arrival";
    std::string io = "alone";
    table.Read("order", order);
    table.Read("io", io);
    table.Read("console", threads.console);
    table.ReadIntegers("preempt", threads.preempt, 1, 1'000'000'000);
    if (order != "arrival" && order != "seeded" && order != "given") {
        table.Fail("order", R"(takes "arrival", "seeded" or "given")");
    }
    if (io != "alone" && io != "parallel") {
        table.Fail("io", R"(takes "alone" or "parallel")");
    }
    if (!threads.preempt.empty() && order != "given") {
        table.Fail("preempt", R"(needs order = "given")");
    }
    threads.order = order == "seeded"  ? ThreadOrder::Seeded
                    : order == "given" ? ThreadOrder::Given
                                       : ThreadOrder::Arrival;
    threads.ioParallel = io == "parallel";
}

void ReadIndicator(TomlTable& table, BoardSetup& board) {
    table.Read("cable_length", board.analog.cableLength, 0.0, 1e6);
    table.Read("lamp_voltage", board.analog.lampVoltage, -100.0, 100.0);
}

void ReadAdc(TomlTable& table, BoardSetup& board) {
    table.Read("scale", board.analog.scale);
    table.Tables("input", [&](TomlTable& entry) {
        std::size_t input = 0;
        double volts = 0.0;
        entry.Require("number");
        entry.Require("volts");
        entry.ReadInteger("number", input, 0, AnalogState::kInputs - 1);
        entry.Read("volts", volts, -1e6, 1e6);
        board.analog.direct.at(input) = volts;
    });
}

void ReadChannels(TomlTable& table, ChannelsSetup& channels) {
    constexpr unsigned last = PwmChip::kCount - 1;
    table.ReadIntegers("exported", channels.exported, 0, last);
    table.ReadIntegers("enabled", channels.enabled, 0, last);
    for (const unsigned channel : channels.enabled) {
        if (std::ranges::count(channels.exported, channel) == 0) {
            table.Fail("enabled", "takes channels that are exported");
        }
    }
}

void ReadAll(TomlTable& top, Scenario& scenario) {
    BoardSetup& board = scenario.board;
    KernelSetup& kernel = scenario.kernel;
    const auto below = [&](std::string_view key, auto& setup, auto read) {
        top.Table(key, [&](TomlTable& table) { read(table, setup); });
    };
    top.Table("board", [&](TomlTable& table) {
        table.Read("present", board.present);
        ReadMissing(table, kernel.paths);
        table.Tables("event", [&](TomlTable& event) { ReadPowerCut(event, board); });
    });
    below("sample", board, ReadSample);
    below("detector", board, ReadDetector);
    below("card", board, ReadCard);
    below("pump", board, ReadPump);
    below("clock", scenario, ReadClock);
    below("lines", board, ReadLines);
    below("threads", scenario, ReadThreads);
    below("mount_table", kernel.mounts, ReadMountTable);
    below("indicator", board, ReadIndicator);
    below("adc", board, ReadAdc);
    top.Tables("file_system", [&](TomlTable& table) { ReadFileSystem(table, kernel.mounts); });
    top.Table("converter", [&](TomlTable& table) {
        table.ReadIntegers("words", board.converterWords, 0, 0xFFFFFFFFLL);
    });
    below("channels", board.channels, ReadChannels);
    below("attributes", kernel.paths, ReadAttributes);
    top.Tables("fault", [&](TomlTable& table) { ReadFault(table, kernel.faults); });
    top.Finish();
}

/// One line, whatever characters of the file it quotes.
ScenarioError OnOneLine(std::string text) {
    std::ranges::replace_if(
        text, [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
    return {std::move(text)};
}

} // namespace

std::variant<Scenario, ScenarioError> ParseScenario(std::string_view toml,
                                                    const std::string& name) {
    const toml::parse_result parsed = toml::parse(toml, name);
    if (!parsed) {
        const toml::parse_error& error = parsed.error();
        return OnOneLine(name + ":" + std::to_string(error.source().begin.line) + ": " +
                         std::string(error.description()));
    }
    TomlProblems problems{name, {}};
    Scenario scenario;
    TomlTable top(parsed.table(), "", problems);
    ReadAll(top, scenario);
    if (problems.Any()) {
        return OnOneLine(problems.first);
    }
    std::vector<WorldEvent>& events = scenario.board.events;
    std::stable_sort(events.begin(), events.end(),
                     [](const WorldEvent& a, const WorldEvent& b) { return a.at < b.at; });
    return scenario;
}

std::variant<Scenario, ScenarioError> ReadScenarioFile(const std::string& path) {
    std::error_code ignored;
    std::ifstream file(path);
    if (!file || std::filesystem::is_directory(path, ignored)) {
        return ScenarioError{path + ": cannot be read; takes a file in TOML"};
    }
    return ParseScenario(std::string(std::istreambuf_iterator<char>(file), {}), path);
}

} // namespace sim
