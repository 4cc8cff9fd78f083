#include "tests/support/InstrumentRun.h"
#include "tests/support/Text.h"

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
TEST(CommandLine, OfAnyOtherWordsEndsInSilence) {
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"-h"},
                                               {"run"},
                                               {"--Version"},
                                               {"--version "},
                                               {"-version"},
                                               {"--versio"},
                                               {"&&"},
                                               {" &"},
                                               {""},
                                               {"--version", "--version"},
                                               {"&", "&"},
                                               {"--version", ""},
                                               {"&", "--version"},
                                               {"", "", "", "", ""}}) {
        SCOPED_TRACE(testing::PrintToString(words));
        const RunResult run = RunInstrument({.arguments = words});
        EXPECT_EQ(run.status, kEndedAsAsked);
        EXPECT_EQ(run.console + run.errors + run.events, "");
    }
}

TEST(CommandLine, TakesAnAmpersandForNoArgument) {
    for (const char* board : {"", "[pump]\nflag_seen = false\n"}) { // the second ends by itself
        const RunResult without = RunInstrument({.board = board, .measurements = 1});
        const RunResult with =
            RunInstrument({.board = board, .arguments = {"&"}, .measurements = 1});
        EXPECT_NE(without.console, "");
        EXPECT_EQ(with, without);
    }
}

} // namespace
} // namespace tavrelin
