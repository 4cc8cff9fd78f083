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

constexpr double longestRun = 1e9; // seconds, some thirty years

void readSample(TomlTable& table, Scenario& scenario) {
    table.readNumbers("absorbance", scenario.absorbances, -2.0, 6.0);
}

void readDetector(TomlTable& table, Scenario& scenario) {
    table.readInteger("dark", scenario.darkCount, -16'777'216, 16'777'215);
    table.readInteger("reference", scenario.referenceCount, -16'777'216, 16'777'215);
    table.read("noise", scenario.noise, 0.0, 1e7);
}

void readCardEvent(TomlTable& table, Scenario& scenario) {
    WorldEvent event;
    table.require("at");
    table.require("do");
    table.readSeconds("at", event.at, 0.0, longestRun);
    std::string action;
    table.read("do", action);
    if (action != "insert" && action != "remove") {
        table.fail("do", R"(takes "insert" or "remove")");
    }
    event.kind = action == "insert" ? WorldEvent::Kind::insertCard : WorldEvent::Kind::removeCard;
    scenario.events.push_back(event);
}

void readCard(TomlTable& table, Scenario& scenario) {
    table.read("present", scenario.cardPresent);
    table.read("mounted", scenario.cardMounted);
    table.read("partition", scenario.cardPartitioned);
    table.read("fat", scenario.cardFat);
    table.read("write_protected", scenario.cardWriteProtected);
    table.read("read_only", scenario.cardReadOnly);
    table.read("mount_point", scenario.mountPointExists);
    table.readInteger("free_bytes", scenario.cardFreeBytes, 0, 1LL << 50);
    if (scenario.cardMounted && !(scenario.cardPresent && scenario.cardPartitioned &&
                                  scenario.cardFat && scenario.mountPointExists)) {
        table.fail("mounted", "a mounted card is present, has a partition with a FAT file system, "
                              "and a mount point");
    }
    table.tables("event", [&](TomlTable& event) { readCardEvent(event, scenario); });
}

void readPump(TomlTable& table, Scenario& scenario) {
    table.read("flag_seen", scenario.flagSeen);
    table.read("on_flag_at_start", scenario.startOnFlag);
}

void readClock(TomlTable& table, Scenario& scenario) {
    table.tables("jump", [&](TomlTable& jump) {
        WorldEvent event;
        event.kind = WorldEvent::Kind::jumpClock;
        jump.require("at");
        jump.require("seconds");
        jump.readSeconds("at", event.at, 0.0, longestRun);
        jump.readInteger("seconds", event.value, -2'000'000'000, 2'000'000'000);
        scenario.events.push_back(event);
    });
}

void checkLineNames(TomlTable& table, std::string_view key, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (!Lines::number(name)) {
            table.fail(key, "no line is named \"" + name + "\"; lines are A0 to D31");
        }
    }
}

void readLines(TomlTable& table, Scenario& scenario) {
    table.readStrings("exported", scenario.exportedLines);
    table.readStrings("high", scenario.highInputs);
    checkLineNames(table, "exported", scenario.exportedLines);
    checkLineNames(table, "high", scenario.highInputs);
    table.tables("event", [&](TomlTable& entry) {
        WorldEvent event;
        event.kind = WorldEvent::Kind::setInput;
        for (const char* key : {"at", "line", "level"}) {
            entry.require(key);
        }
        entry.readSeconds("at", event.at, 0.0, longestRun);
        entry.readInteger("level", event.value, 0, 1);
        std::string name;
        entry.read("line", name);
        checkLineNames(entry, "line", {name});
        event.line = Lines::number(name).value_or(0);
        scenario.events.push_back(event);
    });
}

void readThreads(TomlTable& table, Scenario& scenario) {
    std::string order = "arrival";
    table.read("order", order);
    if (order != "arrival" && order != "seeded") {
        table.fail("order", R"(takes "arrival" or "seeded")");
    }
    scenario.threadOrder = order == "seeded" ? ThreadOrder::seeded : ThreadOrder::arrival;
}

void readMountTable(TomlTable& table, Scenario& scenario) {
    table.read("present", scenario.mountTableExists);
    table.readStrings("lines", scenario.mountTable);
}

void readFileSystem(TomlTable& table, Scenario& scenario) {
    constexpr std::int64_t most = 1LL << 60;
    FileSystem system;
    table.require("directory");
    table.read("directory", system.directory);
    table.readInteger("block_size", system.blockSize, -2'147'483'648, 2'147'483'647);
    table.readInteger("blocks", system.blocks, 0, most);
    table.readInteger("free", system.freeBlocks, 0, most);
    table.readInteger("available", system.availableBlocks, 0, most);
    scenario.fileSystems.push_back(system);
}

void readIndicator(TomlTable& table, Scenario& scenario) {
    table.read("cable_length", scenario.cableLength, 0.0, 1e6);
    table.read("lamp_voltage", scenario.lampVoltage, -100.0, 100.0);
}

void readAdc(TomlTable& table, Scenario& scenario) {
    table.read("scale", scenario.adcScale);
    table.tables("input", [&](TomlTable& entry) {
        int input = 0;
        double volts = 0.0;
        entry.require("number");
        entry.require("volts");
        entry.readInteger("number", input, 0, 11);
        entry.read("volts", volts, -1e6, 1e6);
        scenario.adcInputs[input] = volts;
    });
}

/// folder: where on the board the path lies.
void checkBoardPath(TomlTable& table, std::string_view key, const std::string& path,
                    std::string_view folder) {
    if (!isPlainPath(path) || !isBoardPath(path) || !within(path, folder)) {
        table.fail(key, "\"" + path +
                            "\" is no path of the board; takes one such as "
                            "\"/sys/class/gpio/pioB18/value\"");
    }
}

void readBoard(TomlTable& table, Scenario& scenario) {
    table.read("present", scenario.boardPresent);
    std::vector<std::string> missing;
    table.readStrings("missing", missing);
    for (const std::string& path : missing) {
        checkBoardPath(table, "missing", path, "");
    }
    scenario.missing.insert(missing.begin(), missing.end());
}

void readAll(TomlTable& top, Scenario& scenario) {
    const auto below = [&](std::string_view key, void (*read)(TomlTable&, Scenario&)) {
        top.table(key, [&](TomlTable& table) { read(table, scenario); });
    };
    below("board", readBoard);
    below("sample", readSample);
    below("detector", readDetector);
    below("card", readCard);
    below("pump", readPump);
    below("clock", readClock);
    below("lines", readLines);
    below("threads", readThreads);
    below("mount_table", readMountTable);
    below("indicator", readIndicator);
    below("adc", readAdc);
    top.tables("file_system", [&](TomlTable& table) { readFileSystem(table, scenario); });
    top.table("converter", [&](TomlTable& table) {
        table.readIntegers("words", scenario.converterWords, 0, 0xFFFFFFFFLL);
    });
    top.table("channels", [&](TomlTable& table) {
        table.readIntegers("exported", scenario.exportedChannels, 0, PwmChip::count - 1);
    });
    top.table("attributes", [&](TomlTable& table) {
        table.texts([&](const std::string& path, const std::string& text) {
            checkBoardPath(table, path, path, "/sys");
            scenario.attributes[path] = text;
        });
    });
    top.tables("fault", [&](TomlTable& table) { readFault(table, scenario); });
    top.finish();
}

} // namespace

std::variant<Scenario, ScenarioError> parseScenario(std::string_view toml,
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
    readAll(top, scenario);
    if (problems.any()) {
        return ScenarioError{problems.first};
    }
    std::stable_sort(scenario.events.begin(), scenario.events.end(),
                     [](const WorldEvent& a, const WorldEvent& b) { return a.at < b.at; });
    return scenario;
}

std::variant<std::string, ScenarioError> readScenarioText(const std::string& path) {
    std::error_code ignored;
    std::ifstream file(path);
    if (!file || std::filesystem::is_directory(path, ignored)) {
        return ScenarioError{path + ": cannot be read; takes a file in TOML"};
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

} // namespace sim
