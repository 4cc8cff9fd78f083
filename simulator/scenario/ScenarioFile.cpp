#include "simulator/scenario/ScenarioFile.h"

#include "simulator/board/Lines.h"
#include "simulator/board/PwmChip.h"
#include "simulator/scenario/ErrnoNames.h"
#include "simulator/scenario/TomlTable.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>

namespace sim {
namespace {

constexpr double longestRun = 1e9; // seconds, some thirty years

constexpr std::array<std::string_view, 27> faultCalls{"access",
                                                      "clock_gettime",
                                                      "close",
                                                      "endmntent",
                                                      "fork",
                                                      "ioctl",
                                                      "kill",
                                                      "lseek",
                                                      "lstat",
                                                      "mkdir",
                                                      "mmap",
                                                      "mount",
                                                      "nanosleep",
                                                      "open",
                                                      "poll",
                                                      "pthread_create",
                                                      "pthread_join",
                                                      "pthread_mutex_init",
                                                      "pthread_mutex_lock",
                                                      "pthread_mutex_unlock",
                                                      "read",
                                                      "setmntent",
                                                      "stat",
                                                      "statfs",
                                                      "system",
                                                      "umount",
                                                      "write"};

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

void readFault(TomlTable& table, Scenario& scenario) {
    Fault fault;
    table.require("call");
    table.read("call", fault.call);
    table.read("path", fault.path);
    table.readInteger("occurrence", fault.occurrence, 1, 1'000'000'000);
    if (!isFaultCall(fault.call)) {
        table.fail("call", "unknown call; known: " + faultCallNames());
    }
    std::string error;
    table.read("errno", error);
    if (table.has("bytes")) {
        std::int64_t bytes = 0;
        table.readInteger("bytes", bytes, 0, 1'000'000);
        fault.bytes = static_cast<std::uint64_t>(bytes);
        if (fault.call != "read" && fault.call != "write") {
            table.fail("bytes", "goes with the calls read and write only");
        }
    }
    if (table.has("errno") == table.has("bytes")) {
        table.fail("errno", "a fault has either an errno or bytes");
    } else if (table.has("errno") && !errnoNumber(error)) {
        table.fail("errno", R"(unknown name ")" + error + R"("; takes one such as "EACCES")");
    }
    fault.error = errnoNumber(error).value_or(0);
    std::string repeat = "once";
    table.read("repeat", repeat);
    if (repeat != "once" && repeat != "forever") {
        table.fail("repeat", R"(takes "once" or "forever")");
    }
    fault.forever = repeat == "forever";
    scenario.faults.push_back(fault);
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
        entry.readInteger("number", input, 0, 11);
        entry.read("volts", volts, -1e6, 1e6);
        scenario.adcInputs[input] = volts;
    });
}

void readBoard(TomlTable& table, Scenario& scenario) {
    table.read("present", scenario.boardPresent);
    std::vector<std::string> missing;
    table.readStrings("missing", missing);
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
            scenario.attributes[path] = text;
        });
    });
    top.tables("fault", [&](TomlTable& table) { readFault(table, scenario); });
    top.finish();
}

} // namespace

bool isFaultCall(std::string_view call) {
    return std::find(faultCalls.begin(), faultCalls.end(), call) != faultCalls.end();
}

std::string faultCallNames() {
    std::string names;
    for (const std::string_view call : faultCalls) {
        names += (names.empty() ? "" : ", ") + std::string(call);
    }
    return names;
}

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

std::variant<Scenario, ScenarioError> readScenarioFile(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        return ScenarioError{path + ": cannot be read"};
    }
    std::stringstream text;
    text << file.rdbuf();
    if (file.bad()) {
        return ScenarioError{path + ": cannot be read"};
    }
    return parseScenario(text.str(), path);
}

} // namespace sim
