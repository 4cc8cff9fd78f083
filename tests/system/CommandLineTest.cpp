#include "tests/support/Text.h"
#include "tests/system/InstrumentRun.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

TEST(CommandLine, ShowsTheVersionAndAnEmptyLineAndTouchesNothing) {
    const RunResult run = RunInstrument({.arguments = {"--version"}});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(run.console, "0.1.4.47\n\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.events, "");
}

// Anything but one known word ends the program in silence and with status 0.
class UnknownArguments : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(UnknownArguments, EndInSilence) {
    const RunResult run = RunInstrument({.arguments = GetParam()});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(run.console, "");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.events, "");
}

using Arguments = std::vector<std::string>;
INSTANTIATE_TEST_SUITE_P(One, UnknownArguments,
                         testing::Values(Arguments{"-h"}, Arguments{"run"}, Arguments{"--Version"},
                                         Arguments{"--version "}, Arguments{"-version"},
                                         Arguments{"--versio"}, Arguments{"&&"}, Arguments{" &"},
                                         Arguments{""}));
INSTANTIATE_TEST_SUITE_P(Several, UnknownArguments,
                         testing::Values(Arguments{"--version", "--version"}, Arguments{"&", "&"},
                                         Arguments{"--version", ""}, Arguments{"&", "--version"},
                                         Arguments{"", "", "", "", ""}));

TEST(CommandLine, TakesAnAmpersandForNoArgument) {
    const RunResult without = RunInstrument({.measurements = 1});
    const RunResult with = RunInstrument({.arguments = {"&"}, .measurements = 1});
    EXPECT_NE(without.console, "");
    EXPECT_EQ(with, without);
}

} // namespace
} // namespace tavrelin
