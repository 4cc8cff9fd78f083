// The service unit and the page that explains it.

#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace tavrelin {
namespace {

using Keys = std::set<std::string>; // "Restart="

std::string Unit() {
    return TextOf(InCheckout("packaging/tavrelin.service"));
}

Keys KeysOfTheUnit() {
    Keys keys;
    for (const std::string& line : LinesOf(Unit())) {
        const std::size_t end = line.find('=');
        if (end != std::string::npos && line.front() != '#') {
            keys.insert(line.substr(0, end + 1));
        }
    }
    return keys;
}

// What stands between backquotes in the first column of a stretch of the page.
Keys KeysExplained(const std::string& begin, const std::string& end) {
    const std::string page = TextOf(InCheckout("docs/service-unit.md"));
    const std::size_t from = page.find(begin);
    Keys keys;
    for (const std::string& row : LinesOf(page.substr(from, page.find(end, from) - from))) {
        const std::vector<std::string> names = Split(Split(row + "||", '|').at(1), '`');
        for (std::size_t name = 1; name < names.size(); name += 2) {
            keys.insert(names[name]);
        }
    }
    return keys;
}

TEST(ServiceUnit, IsExplainedLineByLine) {
    EXPECT_EQ(KeysExplained("## What ends and starts", "## What must not"), KeysOfTheUnit());
}

TEST(ServiceUnit, HoldsNothingThatWouldBreakARun) {
    const Keys unit = KeysOfTheUnit();
    const Keys forbidden = KeysExplained("## What must not", "`./check unit`");
    EXPECT_GT(forbidden.size(), 20U);
    for (const std::string& key : forbidden) {
        EXPECT_EQ(unit.count(key), 0U) << key;
    }
}

// What they do is told by the tests that kill the instrument.
TEST(ServiceUnit, MakesTheBoardSafeBeforeEachStartAndAfterEachEnd) {
    const std::string unit = Unit();
    EXPECT_THAT(unit, testing::HasSubstr("\nExecStartPre=-tavrelin-service safe-state\n"
                                         "ExecStart=tavrelin\n"
                                         "ExecStopPost=-tavrelin-service safe-state\n"
                                         "Restart=always\n"));
}

} // namespace
} // namespace tavrelin
