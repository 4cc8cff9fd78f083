#include "simulator/scenario/ScenarioFile.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/board/Lines.h"
#include "simulator/board/PwmChip.h"
#include "simulator/scenario/FaultTable.h"
#include "simulator/scenario/TomlTable.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace sim {
namespace {

constexpr double kLongestRun = 1e9; // seconds, some thirty years

void ReadSample(TomlTable& table, Scenario& scenario) {
    table.ReadNumbers("absorbance", scenario.absorbances, -2.0, 6.0);
}

void ReadDetector(TomlTable& table, Scenario& scenario) {
    table.ReadInteger("dark", scenario.darkCount, -16'777'216, 16'777'215);
    table.ReadInteger("reference", scenario.referenceCount, -16'777'216, 16'777'215);
    table.Read("noise", scenario.noise, 0.0, 1e7);
}

void ReadCardEvent(TomlTable& table, Scenario& scenario) {
    WorldEvent event;
    table.Require("at");
    table.Require("do");
    table.ReadSeconds("at", event.at, 0.0, kLongestRun);
    std::string action;
    table.Read("do", action);
    if (action != "insert" && action != "remove") {
        table.Fail("do", R"(takes "insert" or "remove")");
    }
    event.kind = action == "insert" ? WorldEvent::Kind::InsertCard : WorldEvent::Kind::RemoveCard;
    scenario.events.push_back(event);
}

void ReadCard(TomlTable& table, Scenario& scenario) {
    table.Read("present", scenario.cardPresent);
    table.Read("mounted", scenario.cardMounted);
    table.Read("partition", scenario.cardPartitioned);
    table.Read("fat", scenario.cardFat);
    table.Read("write_protected", scenario.cardWriteProtected);
    table.Read("read_only", scenario.cardReadOnly);
    table.Read("mount_point", scenario.mountPointExists);
    table.ReadInteger("free_bytes", scenario.cardFreeBytes, 0, 1LL << 50);
    if (scenario.cardMounted && !(scenario.cardPresent && scenario.cardPartitioned &&
                                  scenario.cardFat && scenario.mountPointExists)) {
        table.Fail("mounted", "a mounted card is present, has a partition with a FAT file system, "
                              "and a mount point");
    }
    table.Tables("event", [&](TomlTable& event) { ReadCardEvent(event, scenario); });
}

void ReadPump(TomlTable& table, Scenario& scenario) {
    table.Read("flag_seen", scenario.flagSeen);
    table.Read("on_flag_at_start", scenario.startOnFlag);
}

void ReadClock(TomlTable& table, Scenario& scenario) {
    table.Tables("jump", [&](TomlTable& jump) {
        WorldEvent event;
        event.kind = WorldEvent::Kind::JumpClock;
        jump.Require("at");
        jump.Require("seconds");
        jump.ReadSeconds("at", event.at, 0.0, kLongestRun);
        jump.ReadInteger("seconds", event.value, -2'000'000'000, 2'000'000'000);
        scenario.events.push_back(event);
    });
}

void CheckLineNames(TomlTable& table, std::string_view key, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (!Lines::Number(name)) {
            table.Fail(key, "no line is named \"" + name + "\"; lines are A0 to D31");
        }
    }
}

void ReadLines(TomlTable& table, Scenario& scenario) {
    table.ReadStrings("exported", scenario.exportedLines);
    table.ReadStrings("high", scenario.highInputs);
    CheckLineNames(table, "exported", scenario.exportedLines);
    CheckLineNames(table, "high", scenario.highInputs);
    table.Tables("event", [&](TomlTable& entry) {
        WorldEvent event;
        event.kind = WorldEvent::Kind::SetInput;
        for (const char* key : {"at", "line", "level"}) {
            entry.Require(key);
        }
        entry.ReadSeconds("at", event.at, 0.0, kLongestRun);
        entry.ReadInteger("level", event.value, 0, 1);
        std::string name;
        entry.Read("line", name);
        CheckLineNames(entry, "line", {name});
        event.line = Lines::Number(name).value_or(0);
        scenario.events.push_back(event);
    });
}

void ReadThreads(TomlTable& table, Scenario& scenario) {
    std::string order = "arrival";
    table.Read("order", order);
    if (order != "arrival" && order != "seeded") {
        table.Fail("order", R"(takes "arrival" or "seeded")");
    }
    scenario.threadOrder = order == "seeded" ? ThreadOrder::Seeded : ThreadOrder::Arrival;
}

void ReadMountTable(TomlTable& table, Scenario& scenario) {
    table.Read("present", scenario.mountTableExists);
    table.ReadStrings("lines", scenario.mountTable);
}

void ReadFileSystem(TomlTable& table, Scenario& scenario) {
    constexpr std::int64_t most = 1LL << 60;
    FileSystem system;
    table.Require("directory");
    table.Read("directory", system.directory);
    table.ReadInteger("block_size", system.blockSize, -2'147'483'648, 2'147'483'647);
    table.ReadInteger("blocks", system.blocks, 0, most);
    table.ReadInteger("free", system.freeBlocks, 0, most);
    table.ReadInteger("available", system.availableBlocks, 0, most);
    scenario.fileSystems.push_back(system);
}

void ReadIndicator(TomlTable& table, Scenario& scenario) {
    table.Read("cable_length", scenario.cableLength, 0.0, 1e6);
    table.Read("lamp_voltage", scenario.lampVoltage, -100.0, 100.0);
}

void ReadAdc(TomlTable& table, Scenario& scenario) {
    table.Read("scale", scenario.adcScale);
    table.Tables("input", [&](TomlTable& entry) {
        int input = 0;
        double volts = 0.0;
        entry.Require("number");
        entry.Require("volts");
        entry.ReadInteger("number", input, 0, 11);
        entry.Read("volts", volts, -1e6, 1e6);
        scenario.adcInputs[input] = volts;
    });
}

/// folder: where on the board the path lies.
void CheckBoardPath(TomlTable& table, std::string_view key, const std::string& path,
                    std::string_view folder) {
    if (!IsPlainPath(path) || !IsBoardPath(path) || !Within(path, folder)) {
        table.Fail(key, "\"" + path +
                            "\" is no path of the board; takes one such as "
                            "\"/sys/class/gpio/pioB18/value\"");
    }
}

void ReadBoard(TomlTable& table, Scenario& scenario) {
    table.Read("present", scenario.boardPresent);
    std::vector<std::string> missing;
    table.ReadStrings("missing", missing);
    for (const std::string& path : missing) {
        CheckBoardPath(table, "missing", path, "");
    }
    scenario.missing.insert(missing.begin(), missing.end());
}

void ReadAll(TomlTable& top, Scenario& scenario) {
    const auto below = [&](std::string_view key, void (*read)(TomlTable&, Scenario&)) {
        top.Table(key, [&](TomlTable& table) { read(table, scenario); });
    };
    below("board", ReadBoard);
    below("sample", ReadSample);
    below("detector", ReadDetector);
    below("card", ReadCard);
    below("pump", ReadPump);
    below("clock", ReadClock);
    below("lines", ReadLines);
    below("threads", ReadThreads);
    below("mount_table", ReadMountTable);
    below("indicator", ReadIndicator);
    below("adc", ReadAdc);
    top.Tables("file_system", [&](TomlTable& table) { ReadFileSystem(table, scenario); });
    top.Table("converter", [&](TomlTable& table) {
        table.ReadIntegers("words", scenario.converterWords, 0, 0xFFFFFFFFLL);
    });
    top.Table("channels", [&](TomlTable& table) {
        table.ReadIntegers("exported", scenario.exportedChannels, 0, PwmChip::kCount - 1);
    });
    top.Table("attributes", [&](TomlTable& table) {
        table.Texts([&](const std::string& path, const std::string& text) {
            CheckBoardPath(table, path, path, "/sys");
            scenario.attributes[path] = text;
        });
    });
    top.Tables("fault", [&](TomlTable& table) { ReadFault(table, scenario); });
    top.Finish();
}

} // namespace

std::variant<Scenario, ScenarioError> ParseScenario(std::string_view toml,
                                                    const std::string& name) {
    const toml::parse_result parsed = toml::parse(toml, name);
    if (!parsed) {
        const toml::parse_error& error = parsed.error();
        return ScenarioError{name + ":" + std::to_string(error.source().begin.line) + ": " +
                             std::string(error.description())};
    }
    TomlProblems problems{name, {}};
    Scenario scenario;
    TomlTable top(parsed.table(), "", problems);
    ReadAll(top, scenario);
    if (problems.Any()) {
        return ScenarioError{problems.first};
    }
    std::stable_sort(scenario.events.begin(), scenario.events.end(),
                     [](const WorldEvent& a, const WorldEvent& b) { return a.at < b.at; });
    return scenario;
}

std::variant<std::string, ScenarioError> ReadScenarioText(const std::string& path) {
    std::error_code ignored;
    std::ifstream file(path);
    if (!file || std::filesystem::is_directory(path, ignored)) {
        return ScenarioError{path + ": cannot be read; takes a file in TOML"};
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

} // namespace sim
