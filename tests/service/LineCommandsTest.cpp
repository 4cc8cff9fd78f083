#include "tests/service/ServiceRun.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

TEST(ServiceRegister, ReadsALineThatSomebodyElseHasTaken) {
    const std::string taken = "[lines]\nexported = [\"C5\"]\nhigh = [\"C5\"]\n";
    EXPECT_EQ(SimulatedTranscript({"register", "C5"}, taken),
              "$ tavrelin-service register C5\nC5: 1\n");
    EXPECT_EQ(SimulatedTranscript({"register", "C6"}, taken),
              "$ tavrelin-service register C6\nC6: 0\n");
    EXPECT_EQ(SimulateService({"register", "C5"}, taken).events, "0 1 mmap /dev/mem 0xfffff000\n");
}

TEST(ServiceRegister, WritesALineAndTellsWhatItHasBecome) {
    const auto written = [](const std::string& level) {
        return LinesWith(SimulateService({"register", "D31", level}).events, "write");
    };
    EXPECT_THAT(written("1"), testing::ElementsAre("0 1 write /dev/mem PIOD set 80000000"));
    EXPECT_THAT(written("0"), testing::ElementsAre("0 1 write /dev/mem PIOD clear 80000000"));
    EXPECT_EQ(SimulatedTranscript({"register", "D31", "1"}), // no output, so it does not follow
              "$ tavrelin-service register D31 1\nD31: 0\n");
}

TEST(ServiceRegister, FailsWhereTheRegistersCannotBeHad) {
    const std::string missing = "[board]\nmissing = [\"/dev/mem\"]\n";
    for (const Words& words : {Words{"register", "A0"}, Words{"register", "A0", "1"}}) {
        const CommandResult result = SimulateService(words, missing).result;
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.error, "open of /dev/mem failed\n");
    }
}

constexpr const char* kFlagComes = "[[lines.event]]\nat = 3.2\nline = \"B18\"\nlevel = 0\n";

TEST(ServiceWaitEdge, PrintsTheLevelAfterTheEdgeAndGivesTheLineBack) {
    const SimulatedCall call = SimulateService({"wait-edge", "B18"}, kFlagComes);
    EXPECT_EQ(Transcript({"wait-edge", "B18"}, call.result),
              "$ tavrelin-service wait-edge B18\nB18: 0\n");
    EXPECT_THAT(LinesWith(call.events, "write"),
                testing::ElementsAre("0 1 write /sys/class/gpio/export \"50\"",
                                     "0 1 write /sys/class/gpio/pioB18/direction \"in\"",
                                     "0 1 write /sys/class/gpio/pioB18/edge \"both\"",
                                     "3200000 1 write /sys/class/gpio/unexport \"50\""));
}

TEST(ServiceWaitEdge, WaitsTenSecondsOrAsLongAsItIsTold) {
    const auto waits = [](const Words& words, const char* time) {
        const SimulatedCall call = SimulateService(words);
        EXPECT_EQ(call.result.status, 1);
        EXPECT_EQ(call.result.output, "");
        EXPECT_EQ(call.result.error, "tavrelin-service wait-edge: no edge of B18\n");
        EXPECT_THAT(call.summary,
                    testing::HasSubstr(std::string("board_time_us = ") + time + "\n"));
    };
    waits({"wait-edge", "B18"}, "10000000");
    waits({"wait-edge", "B18", "--for", "1"}, "1000000");
    waits({"wait-edge", "B18", "--for", "3600"}, "3600000000");
}

TEST(ServiceWaitEdge, LeavesALineThatIsTakenAlone) {
    const SimulatedCall call =
        SimulateService({"wait-edge", "B18"}, "[lines]\nexported = [\"B18\"]\n");
    EXPECT_EQ(call.result.status, 1);
    EXPECT_EQ(call.result.error,
              "tavrelin-service wait-edge: B18 is taken; stop the instrument first\n");
    EXPECT_EQ(call.events, "");
}

TEST(ServiceWaitEdge, GivesTheLineBackWhenASignalEndsTheWait) {
    const SimulatedCall call =
        SimulateService({"wait-edge", "B18"}, "[[fault]]\ncall = \"poll\"\nerrno = \"EINTR\"\n");
    EXPECT_EQ(call.result.status, 1);
    EXPECT_EQ(call.result.error, "tavrelin-service wait-edge: no edge of B18\n");
    EXPECT_THAT(call.events, testing::EndsWith("write /sys/class/gpio/unexport \"50\"\n"));
}

} // namespace
} // namespace tavrelin
