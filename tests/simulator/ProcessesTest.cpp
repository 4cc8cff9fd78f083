// What the program and its processes see: its own streams unchanged, the board under it alone, and
// the launcher's signals.

#include "tests/simulator/Launcher.h"

#include "tests/support/Fifo.h"
#include "tests/support/Offspring.h"
#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"

#include <csignal>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavrelin {
namespace {

TEST(Streams, PassUnchanged) {
    const std::string command = "printf 'a\\nb\\n' | " + Binary("simulate") + " --steps 3 -- " +
                                testProgram("troublemaker") + " speak";
    const CommandResult run = RunCommand({"sh", "-c", command});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, "first, second\nheard a\nheard b\nT");
    EXPECT_EQ(run.error, "complaint\n");
}

TEST(Streams, KeepTheirOrderOnOneTerminal) {
    const std::string command =
        Binary("simulate") + " -- " + testProgram("troublemaker") + " speak 2>&1 </dev/null";
    const CommandResult run = RunCommand({"sh", "-c", command});
    EXPECT_THAT(run.output, testing::HasSubstr("complaint\n"));
    EXPECT_THAT(run.output, testing::HasSubstr("first, second\n"));
}

TEST(Board, IsUnderTheProgramAndNotUnderWhatItStarts) {
    ASSERT_NE(::access("/sys/class/pwm/pwmchip0/npwm", F_OK), 0) << "a machine with such a device";
    const CommandResult run = SimulateTrouble({"look-around", "/sys/class/pwm/pwmchip0/npwm"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, "board yes\n"
                          "shell no\n"
                          "exec no\n"
                          "preloaded no\n");
}

TEST(Board, IsInertInOtherPrograms) {
    const std::string library = InBuild("lib/libsimulated-board.so");
    const Words preloaded{"env", "LD_PRELOAD=" + library};
    const auto lookAround = [&](Words command) {
        command.insert(command.begin(), preloaded.begin(), preloaded.end());
        return RunCommand(command).output;
    };
    const std::string path = "/sys/class/pwm/pwmchip0/npwm";
    EXPECT_EQ(lookAround({"sh", "-c", "test -e " + path + " || echo none"}), "none\n");
    const std::string other = "TAVRELIN_SIMULATION=program=/bin/other\nreport=9\nscenario=-1\n"
                              "seed=1\nstart=0\npace=0\nboard-time=9\n";
    EXPECT_EQ(lookAround({other, "sh", "-c", "test -e " + path + " || echo none"}), "none\n");
    EXPECT_EQ(lookAround({"TAVRELIN_SIMULATION=rubbish", "echo", "works"}), "works\n");
}

/// A run of a program that spins for ever, from its start to its end.
class SpinningRun {
  public:
    SpinningRun() : launcher_(::fork()) {
        if (launcher_ == 0) {
            const std::string command = "exec " + Binary("simulate") + " -- " +
                                        testProgram("troublemaker") + " spin-ready >" +
                                        output_.Path() + " 2>" + errors_;
            ::execlp("sh", "sh", "-c", command.c_str(), nullptr);
            ::_exit(127);
        }
        program_ = std::stoi(output_.Line());
    }
    SpinningRun(const SpinningRun&) = delete;
    SpinningRun& operator=(const SpinningRun&) = delete;
    ~SpinningRun() { Offspring::End(); }

    pid_t Program() const { return program_; }
    std::string Errors() const { return TextOf(errors_); }
    /// Sends a signal to the launcher and gives its exit status, or minus the signal it died of.
    int Stop(int signal) const {
        int status = 0;
        ::kill(launcher_, signal);
        ::waitpid(launcher_, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

  private:
    TestFolder folder_;
    Fifo output_{folder_.Path("output")};
    std::string errors_ = folder_.Path("errors");
    pid_t launcher_;
    pid_t program_ = 0;
};

TEST(Interruption, EndsTheProgramWithTheLauncher) {
    for (const int signal : {SIGINT, SIGTERM}) {
        SpinningRun run;
        EXPECT_FALSE(Offspring::IsGone(run.Program()));
        EXPECT_EQ(run.Stop(signal), 128 + signal);
        EXPECT_TRUE(Offspring::IsGone(run.Program()));
        EXPECT_EQ(run.Errors(), "simulate: interrupted\n");
    }
}

} // namespace
} // namespace tavrelin
