// The alarm of tavrelin-service, the one command that starts a child and waits.

#include "tests/service/ServiceRun.h"
#include "tests/support/Fifo.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/Offspring.h"
#include "tests/support/Places.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>

namespace tavrelin {
namespace {

constexpr unsigned kPatience = 30; // seconds of real time

/// A mixer that does nothing and a player that does what the test says, found before the machine's.
/// No process outlives a test.
class ServiceAlarm : public testing::Test {
  protected:
    ServiceAlarm() {
        Install("amixer", "exit 0");
        Install("aplay", "exit 0");
    }

    void TearDown() override {
        Offspring::End();
        EXPECT_TRUE(Offspring::Children().empty());
    }

    void Install(const std::string& tool, const std::string& script) const {
        WriteText(folder.Path(tool), "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(folder.Path(tool), std::filesystem::perms::owner_all);
    }

    static pid_t PlayerOf(const std::string& output) {
        const std::size_t at = output.find("Child pid = ");
        return at == std::string::npos ? -1 : std::atoi(output.c_str() + at + 12);
    }

    // For a process that has lost its parent and so has become a child of the test.
    static bool DiesSoon(pid_t process) {
        struct sigaction interrupt {};
        interrupt.sa_handler = [](int) {};
        ::sigaction(SIGALRM, &interrupt, nullptr);
        ::alarm(kPatience);
        const bool dead = ::waitpid(process, nullptr, 0) == process;
        ::alarm(0);
        return dead;
    }

    Offspring offspring;
    TestFolder folder;
    Environment path{"PATH", folder.Path() + ":" + std::getenv("PATH")};
};

TEST_F(ServiceAlarm, TellsWhichProcessesThereAre) {
    EXPECT_TRUE(MatchesGoldenFile(
        SimulatedTranscript({"alarm"}) + SimulatedTranscript({"alarm", "--for", "3600"}) +
            "\nNo child can be started:\n" +
            SimulatedTranscript({"alarm"}, "[[fault]]\ncall = \"fork\"\nerrno = \"EAGAIN\"\n"),
        "service/golden/alarm.txt"));
}

TEST_F(ServiceAlarm, CallsTheToolsInOrder) {
    const std::string calls = folder.Path("calls");
    Install("amixer", "{ printf '[%s]' amixer \"$@\"; echo; } >>'" + calls + "'");
    SimulateService({"alarm"});
    EXPECT_EQ(TextOf(calls), "[amixer][set][-q][Output Mixer HiFi][unmute]\n"
                             "[amixer][set][-q][Master][100%,100%]\n");
}

TEST_F(ServiceAlarm, LastsThreeSecondsOrAsLongAsItIsTold) {
    const auto microseconds = [](const Words& words) {
        const std::string summary = SimulateService(words).summary;
        const std::string label = "board_time_us = ";
        return std::atoll(summary.c_str() + summary.find(label) + label.size());
    };
    EXPECT_EQ(microseconds({"alarm"}), 3'000'000);
    EXPECT_EQ(microseconds({"alarm", "--for", "1"}), 1'000'000);
    EXPECT_EQ(microseconds({"alarm", "--for", "3600"}), 3'600'000'000);
}

TEST_F(ServiceAlarm, LeavesNoChildBehind) {
    const CommandResult result = SimulateService({"alarm"}).result;
    const pid_t player = PlayerOf(result.output);
    ASSERT_GT(player, 0);
    EXPECT_TRUE(Offspring::IsGone(player));
}

// Not even one that nobody stops: the simulation ends the program in the middle of its wait.
TEST_F(ServiceAlarm, LeavesNoChildBehindWhenItsRunIsStopped) {
    const CommandResult result = RunCommand({InBuild("bin/simulate"), "--board-time", "1", "--",
                                             InBuild("bin/tavrelin-service"), "alarm"});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(DiesSoon(PlayerOf(result.output)));
}

TEST_F(ServiceAlarm, StartsTheWaitOnlyWhenAPlayerWasStarted) {
    const SimulatedCall call =
        SimulateService({"alarm"}, "[[fault]]\ncall = \"fork\"\nerrno = \"EAGAIN\"\n");
    EXPECT_NE(call.summary.find("board_time_us = 0\n"), std::string::npos);
}

/// The signals that ask a program to end.
class ServiceAlarmStopped : public ServiceAlarm, public testing::WithParamInterface<const char*> {};

// On this machine itself: the player, once it plays, sends the signal to the program.
TEST_P(ServiceAlarmStopped, EndsTheChildAndThenItself) {
    const Fifo finish(folder.Path("finish"));
    const std::string program = folder.Path("program");
    Install("aplay", std::string("kill -") + GetParam() + " $(cat '" + program +
                         "')\nread -r line <'" + finish.Path() + "'");
    const auto begin = std::chrono::steady_clock::now();
    const CommandResult result =
        RunCommand({"sh", "-c",
                    "echo $$ >'" + program + "'; exec '" + InBuild("bin/tavrelin-service") +
                        "' alarm --for 60"});
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(kPatience));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error, "");
    const pid_t player = PlayerOf(result.output);
    ASSERT_GT(player, 0) << result.output;
    EXPECT_TRUE(Offspring::IsGone(player));
    finish.Say("now\n"); // what has begun plays to its end
    Offspring::AwaitEnd();
}

INSTANTIATE_TEST_SUITE_P(By, ServiceAlarmStopped, testing::Values("INT", "TERM", "HUP"),
                         [](const auto& test) { return std::string(test.param); });

} // namespace
} // namespace tavrelin
