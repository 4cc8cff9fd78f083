// The launcher's command line: every wrong value is refused with what it is, where it stands and
// what would do.

#include "tests/simulator/Launcher.h"

#include "tests/support/GoldenFile.h"

#include <gmock/gmock.h>

namespace tavrelin {
namespace {

constexpr int kWrongUse = 2;
const std::string kHint = " (simulate --help explains every option)\n";

struct WrongUse {
    Words options;
    std::string line;
};

void PrintTo(const WrongUse& use, std::ostream* out) {
    for (const std::string& option : use.options) {
        *out << option << " ";
    }
}

class WrongOption : public testing::TestWithParam<WrongUse> {};

TEST_P(WrongOption, IsRefusedWithWhatWouldDo) {
    const CommandResult run = Simulate(GetParam().options, {"/bin/true"});
    EXPECT_EQ(run.status, kWrongUse);
    EXPECT_EQ(run.error, "simulate: " + GetParam().line + kHint);
    EXPECT_EQ(run.output, "");
}

/// Each option with what it takes, and values that it does not take.
std::vector<WrongUse> WrongValues() {
    struct Option {
        std::string name;
        std::string takes;
        Words wrong;
    };
    const std::string count = "a whole number from 1 to 1000000000";
    const Option options[]{
        {"--seed",
         "a whole number from 0 to 18446744073709551615",
         {"-1", "x", "1.5", "0x10", "", "18446744073709551616", "1 2"}},
        {"--measurements", count, {"0", "-3", "many", "1000000001", "2.0"}},
        {"--steps", count, {"0", "all", "1000000001"}},
        {"--calls", count, {"0", "1.5", "1000000001"}},
        {"--board-time",
         "seconds from 0.000001 to 9000000000",
         {"0", "-1", "nan", "inf", "9e10", "1h"}},
        {"--stall", "seconds from 0 to 9000000000", {"-1", "nan", "1d"}},
        {"--real-time", "seconds from 0 to 9000000000", {"-1", "nan", "soon"}},
        {"--pace",
         "max, real or a factor from 0.000001 to 1000000000",
         {"0", "-2", "nan", "inf", "fast", "2x", "1e-7", "2e9"}},
        {"--start",
         "a time such as \"2026-03-07 09:00:00\"",
         {"now", "2026-03-07", "2026-02-29 09:00:00", "2026-03-07 24:00:00", "2026-03-07 09:00:60",
          "2026-3-7 9:0:0", "1969-12-31 23:59:59", "2026-03-07T09:00:00", ""}},
        {"--root", "a path", {"", "a\nb"}},
        {"--board", "a path", {""}},
        {"--serve", "a whole number from 0 to 65535", {"-1", "65536", "http", "1.5"}},
        {"--events", "a path", {""}},
        {"--vcd", "a path", {"", "a\nb"}},
        {"--summary", "a path", {""}},
        {"--scenario", "a path", {""}}};
    std::vector<WrongUse> uses;
    for (const Option& option : options) {
        for (const std::string& value : option.wrong) {
            uses.push_back({{option.name, value},
                            option.name + ": takes " + option.takes + ", not '" + value + "'"});
        }
    }
    return uses;
}

INSTANTIATE_TEST_SUITE_P(Value, WrongOption, testing::ValuesIn(WrongValues()));
INSTANTIATE_TEST_SUITE_P(Itself, WrongOption,
                         testing::Values(WrongUse{{"--speed", "3"}, "--speed: no such option"},
                                         WrongUse{{"-s"}, "-s: no such option"},
                                         WrongUse{{"--io-cost", "none"}, "--io-cost: given twice"},
                                         WrongUse{{"--serve", "--board", "file"},
                                                  "--serve does not go with --board, whose file is "
                                                  "another after the run"},
                                         WrongUse{{"--seed", "1", "--seed", "2"},
                                                  "--seed: given twice"}));

/// The line with which `simulate` refuses these arguments.
std::string Refusal(Words arguments) {
    arguments.insert(arguments.begin(), Binary("simulate"));
    const CommandResult run = RunCommand(arguments);
    EXPECT_EQ(run.status, kWrongUse);
    return run.error;
}

TEST(CommandLineOfTheLauncher, NeedsAProgram) {
    for (const Words& command : {Words{}, Words{"--steps", "3"}, Words{"--"}}) {
        EXPECT_EQ(Refusal(command), "simulate: no program to run; name it after --" + kHint);
    }
}

TEST(CommandLineOfTheLauncher, NeedsAValueForAnOption) {
    EXPECT_EQ(Refusal({"--seed"}), "simulate: --seed: needs a value" + kHint);
}

TEST(CommandLineOfTheLauncher, RefusesAnUnknownCost) {
    EXPECT_EQ(Refusal({"--io-cost", "cheap", "true"}),
              "simulate: --io-cost: takes none or board, not 'cheap'" + kHint);
}

TEST(CommandLineOfTheLauncher, LeavesTheProgramsArgumentsToIt) {
    EXPECT_EQ(Simulate({}, {"/bin/echo", "--steps", "x", "--help", "-q"}).output,
              "--steps x --help -q\n");
    EXPECT_EQ(RunCommand({Binary("simulate"), "--seed", "3", "/bin/echo", "--seed", "x"}).output,
              "--seed x\n");
}

TEST(CommandLineOfTheLauncher, ExplainsEveryOptionAndStatus) {
    const CommandResult run = RunCommand({Binary("simulate"), "--help"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.error, "");
    EXPECT_TRUE(MatchesGoldenFile(run.output, "simulator/golden/help.txt"));
    EXPECT_EQ(RunCommand({Binary("simulate"), "-h"}).output, run.output);
}

} // namespace
} // namespace tavrelin
