// The alarm of tavrelin-service, the one command that starts a child and waits.

#include "tests/service/ServiceRun.h"
#include "tests/support/Fifo.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/Offspring.h"
#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"

#include <gmock/gmock.h>
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
constexpr const char* kNoChild = "[[fault]]\ncall = \"fork\"\nerrno = \"EAGAIN\"\n";

/// A mixer that does nothing and a player that does what the test says, found before the machine's.
/// No process outlives a test.
class ServiceAlarm : public testing::Test {
  protected:
    ServiceAlarm() {
        tools.Install("amixer", "exit 0");
        tools.Install("aplay", "exit 0");
        WriteText(tools.Path("alarm.wav"), "");
        std::filesystem::current_path(tools.Path());
    }

    void TearDown() override {
        std::filesystem::current_path(before);
        Offspring::End();
        EXPECT_TRUE(Offspring::Children().empty());
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

    std::filesystem::path before = std::filesystem::current_path();
    Offspring offspring;
    TestTools tools;
};

TEST_F(ServiceAlarm, TellsWhichProcessesThereAre) {
    EXPECT_TRUE(MatchesGoldenFile(
        SimulatedTranscript({"alarm"}) + SimulatedTranscript({"alarm", "--for", "3600"}) +
            "\nNo child can be started:\n" + SimulatedTranscript({"alarm"}, kNoChild),
        "service/golden/alarm.txt"));
}

TEST_F(ServiceAlarm, CallsTheToolsInOrder) {
    const std::string calls = tools.Path("calls");
    tools.Install("amixer", "{ printf '[%s]' amixer \"$@\"; echo; } >>'" + calls + "'");
    SimulateService({"alarm"});
    EXPECT_EQ(TextOf(calls), "[amixer][set][-q][Output Mixer HiFi][unmute]\n"
                             "[amixer][set][-q][Master][100%,100%]\n");
}

TEST_F(ServiceAlarm, LastsThreeSecondsOrAsLongAsItIsTold) {
    const auto lasts = [](const Words& words, const char* time, const std::string& board = "") {
        EXPECT_THAT(SimulateService(words, board).summary,
                    testing::HasSubstr(std::string("board_time_us = ") + time + "\n"));
    };
    lasts({"alarm"}, "3000000");
    lasts({"alarm", "--for", "1"}, "1000000");
    lasts({"alarm", "--for", "3600"}, "3600000000");
    lasts({"alarm"}, "0", kNoChild);
}

// A player that is not told so would try again for ever.
TEST_F(ServiceAlarm, TellsOnceThatThereIsNoSoundAndStartsNoPlayer) {
    std::filesystem::remove("alarm.wav");
    const CommandResult result = SimulateService({"alarm"}).result;
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error,
              "tavrelin-service alarm: no alarm.wav, neither here nor in /usr/share/tavrelin\n");
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

/// The signals that ask a program to end.
class ServiceAlarmStopped : public ServiceAlarm, public testing::WithParamInterface<const char*> {};

// On this machine itself: the player, once it plays, sends a signal to the program.
class PlayerThatSignals {
  public:
    PlayerThatSignals(const TestTools& tools, const std::string& signal)
        : finish_(tools.Path("finish")), program_(tools.Path("program")) {
        tools.Install("aplay", "kill -" + signal + " $(cat '" + program_ + "')\nread -r line <'" +
                                   finish_.Path() + "'");
    }

    [[nodiscard]] CommandResult Alarm() const {
        return RunCommand({"sh", "-c",
                           "echo $$ >'" + program_ + "'; exec '" + InBuild("bin/tavrelin-service") +
                               "' alarm --for 60"});
    }

    // What has begun plays to its end.
    void Finish() const {
        finish_.Say("now\n");
        Offspring::AwaitEnd();
    }

  private:
    Fifo finish_;
    std::string program_;
};

TEST_P(ServiceAlarmStopped, EndsTheChildAndThenItself) {
    const PlayerThatSignals player(tools, GetParam());
    const auto begin = std::chrono::steady_clock::now();
    const CommandResult result = player.Alarm();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(kPatience));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error, "");
    const pid_t child = PlayerOf(result.output);
    ASSERT_GT(child, 0) << result.output;
    EXPECT_TRUE(Offspring::IsGone(child));
    player.Finish();
}

INSTANTIATE_TEST_SUITE_P(By, ServiceAlarmStopped, testing::Values("INT", "TERM", "HUP"),
                         [](const auto& test) { return std::string(test.param); });

// Nobody is left to stop the child: the signals that its parent caught end it themselves. The
// third, INT, is ignored while a command runs, see AlarmsChild in AlarmTest.cpp.
class ServiceAlarmKilled : public ServiceAlarm, public testing::WithParamInterface<int> {};

TEST_P(ServiceAlarmKilled, LeavesAChildThatASignalEnds) {
    const PlayerThatSignals player(tools, "KILL");
    const CommandResult result = player.Alarm();
    EXPECT_EQ(result.status, 128 + SIGKILL);
    const pid_t child = PlayerOf(result.output);
    ASSERT_GT(child, 0) << result.output;
    EXPECT_FALSE(Offspring::IsGone(child));
    EXPECT_EQ(::kill(child, GetParam()), 0);
    ASSERT_TRUE(DiesSoon(child));
    player.Finish();
}

INSTANTIATE_TEST_SUITE_P(Then, ServiceAlarmKilled, testing::Values(SIGTERM, SIGHUP));

} // namespace
} // namespace tavrelin
