// docs/simulated-board.md is what people read: its examples, keys, calls, costs and statuses are
// the program's own.

#include "simulator/kernel/Calls.h"
#include "simulator/launcher/Options.h"
#include "simulator/scenario/FaultTable.h"
#include "simulator/scenario/ScenarioFile.h"

#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <set>

namespace tavrelin {
namespace {

using testing::Contains;
using Names = std::set<std::string>;

std::string Document() {
    const std::string text = TextOf(InCheckout("docs/simulated-board.md"));
    EXPECT_FALSE(text.empty());
    return text;
}

/// The blocks of a language in the document.
std::vector<std::string> Blocks(const std::string& language) {
    std::vector<std::string> found;
    const std::string text = Document();
    const std::string fence = "```" + language + "\n";
    for (std::size_t at = text.find(fence); at != std::string::npos; at = text.find(fence, at)) {
        const std::size_t begin = at + fence.size();
        at = text.find("```", begin);
        found.push_back(text.substr(begin, at - begin));
    }
    return found;
}

/// The cells of all rows of the tables under a heading.
std::vector<std::vector<std::string>> RowsUnder(const std::string& heading) {
    std::vector<std::vector<std::string>> rows;
    const std::string text = Document();
    const std::size_t begin = text.find("\n" + heading + "\n");
    EXPECT_NE(begin, std::string::npos) << heading;
    const std::string section = text.substr(begin, text.find("\n## ", begin + 1) - begin);
    for (const std::string& line : LinesOf(section)) {
        if (line.substr(0, 2) == "| ") {
            rows.push_back(Split(line.substr(1), '|'));
        }
    }
    return rows;
}

std::string Trimmed(const std::string& cell) {
    const std::size_t begin = cell.find_first_not_of(' ');
    return begin == std::string::npos ? ""
                                      : cell.substr(begin, cell.find_last_not_of(' ') - begin + 1);
}

/// What stands between backquotes in a cell.
Names NamesIn(const std::string& cell) {
    Names names;
    const std::vector<std::string> parts = Split(cell, '`');
    for (std::size_t i = 1; i < parts.size(); i += 2) {
        names.insert(parts[i]);
    }
    return names;
}

/// The keys that a scenario may have, asked of the parser: "card.present", "fault.call".
Names KnownKeys() {
    const auto keysOf = [](const std::string& toml, const std::string& table) {
        const auto read = sim::ParseScenario(toml, "b");
        const std::string error = std::get<sim::ScenarioError>(read).text;
        const std::string intro = "known here: ";
        Names keys;
        for (const std::string& key : Split(error.substr(error.find(intro) + intro.size()), ',')) {
            keys.insert((table.empty() ? "" : table + ".") + Trimmed(key));
        }
        return keys;
    };
    Names keys;
    for (const std::string& table : keysOf("unknown = 1", "")) {
        if (table == "attributes") {
            keys.insert("attributes.\"PATH\"");
        } else if (table == "fault") {
            keys.merge(keysOf("[[fault]]\ncall = 'open'\nerrno = 'EIO'\nunknown = 1", table));
        } else if (table == "file_system") {
            keys.merge(keysOf("[[file_system]]\ndirectory = '/'\nunknown = 1", table));
        } else {
            keys.merge(keysOf(table + ".unknown = 1", table));
        }
    }
    const std::pair<const char*, const char*> events[]{
        {"board.event", "at = 1\ndo = 'power-cut'"},
        {"card.event", "at = 1\ndo = 'insert'"},
        {"clock.jump", "at = 1\nseconds = 1"},
        {"sample.event", "at = 1\nabsorbance = 1"},
        {"detector.event", "at = 1\nnoise = 1"},
        {"pump.event", "at = 1\nflag_seen = false"},
        {"lines.event", "at = 1\nline = 'A0'\nlevel = 1"},
        {"adc.input", "number = 1\nvolts = 1"}};
    for (const auto& [table, right] : events) {
        EXPECT_EQ(keys.erase(table), 1U) << table;
        keys.merge(keysOf("[[" + std::string(table) + "]]\n" + right + "\nunknown = 1", table));
    }
    // What every event may have instead of a moment is told once.
    std::erase_if(keys, [](const std::string& key) {
        return key.ends_with(".on") || (key.find(".at_") != std::string::npos && key[0] != 'f');
    });
    keys.insert({"EVENT.at_step", "EVENT.at_measurement", "EVENT.on"});
    return keys;
}

TEST(Document, ShowsScenariosThatAreRight) {
    const std::vector<std::string> examples = Blocks("toml");
    EXPECT_GE(examples.size(), 5U);
    for (const std::string& example : examples) {
        const auto read = sim::ParseScenario(example, "example");
        const auto* error = std::get_if<sim::ScenarioError>(&read);
        EXPECT_EQ(error, nullptr) << error->text << "\n" << example;
    }
}

TEST(Document, HoldsEveryKeyOfAScenarioAndNoOther) {
    Names documented;
    for (const auto& row : RowsUnder("## Scenarios")) {
        const Names names = NamesIn(row.at(0));
        if (names.size() == 1 && names.begin()->find('.') != std::string::npos) {
            documented.insert(*names.begin());
            EXPECT_EQ(row.size(), 4U) << *names.begin();
        }
    }
    EXPECT_EQ(documented, KnownKeys());
}

/// True when an example sets the key.
bool IsShown(const std::string& key, const std::vector<std::string>& examples) {
    const std::size_t dot = key.rfind('.');
    const std::string table = key.substr(0, dot);
    return std::any_of(examples.begin(), examples.end(), [&](const std::string& example) {
        const std::size_t heading = table == "EVENT" ? 0 : example.find("[" + table + "]");
        return heading != std::string::npos &&
               example.find("\n" + key.substr(dot + 1) + " = ", heading) != std::string::npos;
    });
}

TEST(Document, ShowsEveryKeyInAnExample) {
    const std::vector<std::string> examples = Blocks("toml");
    for (const std::string& key : KnownKeys()) {
        if (key != "attributes.\"PATH\"") {
            EXPECT_TRUE(IsShown(key, examples)) << key;
        }
    }
}

TEST(Document, HoldsEveryCallThatCanFail) {
    Names documented;
    for (const auto& row : RowsUnder("### Faults")) {
        for (const std::string& name : NamesIn(row.at(0))) {
            if (name.find('.') == std::string::npos) {
                documented.insert(name);
            }
        }
    }
    Names known;
    for (const std::string& name : Split(sim::FaultCallNames(), ',')) {
        known.insert(Trimmed(name));
    }
    EXPECT_EQ(documented, known);
}

TEST(Document, HoldsWhatCallsCost) {
    int calls = 0;
    for (const auto& row : RowsUnder("## What calls cost")) {
        for (const std::string& name : NamesIn(row.at(0))) {
            EXPECT_EQ(sim::Microseconds(std::stol(row.at(1))), sim::CallCost(name)) << name;
            ++calls;
        }
    }
    EXPECT_EQ(calls, 16);
}

TEST(Document, HoldsEveryExitStatus) {
    using sim::ExitStatus;
    Names documented;
    for (const auto& row : RowsUnder("## Exit statuses")) {
        documented.insert(Trimmed(row.at(0)));
    }
    using enum sim::ExitStatus;
    for (const ExitStatus status : {AsAsked, WrongUse, BadScenario, ProgramFailed, Crashed,
                                    Deadlock, RealTimeLimit, Unmodelled, NotArmed, CannotStart}) {
        EXPECT_THAT(documented, Contains(std::to_string(static_cast<int>(status))));
    }
}

} // namespace
} // namespace tavrelin
