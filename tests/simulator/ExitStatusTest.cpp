// What `simulate` tells of a program that goes wrong: a status of its own and one clear line.

#include "tests/simulator/Launcher.h"

#include "tests/support/TestFolder.h"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>

namespace tavrelin {
namespace {

struct Trouble {
    Words words;
    int status;
    std::string line; ///< that stands alone on standard error, between "simulate: " and its newline
    Words options{};
};

void PrintTo(const Trouble& trouble, std::ostream* out) {
    *out << trouble.words.front();
}

class ExitStatus : public testing::TestWithParam<Trouble> {};

TEST_P(ExitStatus, ComesWithOneLine) {
    const Trouble& trouble = GetParam();
    const CommandResult run = SimulateTrouble(trouble.words, trouble.options);
    EXPECT_EQ(run.status, trouble.status);
    if (trouble.line.ends_with("+")) { // and the instruction's place
        EXPECT_THAT(run.error, testing::StartsWith("simulate: " + trouble.line + "0x"));
    } else {
        EXPECT_EQ(run.error, "simulate: " + trouble.line + "\n");
    }
    EXPECT_EQ(run.output, "");
}

const std::string kAtTheStart = "before the first step, at 0.000 s of board time";

Trouble NotModelled(const Words& words, const std::string& call) {
    return {words, 13, "the simulated board does not model " + call + " (" + kAtTheStart + ")"};
}

INSTANTIATE_TEST_SUITE_P(
    Of, ExitStatus,
    testing::Values(
        Trouble{{"segfault"}, 10, "the program crashed (SIGSEGV) " + kAtTheStart},
        Trouble{{"abort"}, 10, "the program crashed (SIGABRT) " + kAtTheStart},
        Trouble{{"crash-after-export", "7"},
                10,
                "the program crashed (SIGSEGV) before the first step, at 1.500 s of board time"},
        Trouble{{"two-mutexes"},
                11,
                "deadlock before the first step, at 0.020 s of board time: thread 2 waits for a "
                "mutex that thread 1 locked; thread 1 waits for a mutex that thread 2 locked"},
        Trouble{{"one-mutex-twice"},
                11,
                "deadlock " + kAtTheStart + ": thread 1 waits for a mutex that thread 1 locked"},
        Trouble{{"edge-that-never-comes", "7"},
                11,
                "deadlock " + kAtTheStart + ": thread 1 waits for an edge on line A7"},
        Trouble{{"spin"},
                12,
                "limit of 0.1 s of real time passed " + kAtTheStart + " (--real-time sets it)",
                {"--real-time", "0.1"}},
        Trouble{{"spin"},
                12,
                "the program works on without a call " + kAtTheStart + ": thread 1 at " +
                    testProgram("troublemaker") + "+"},
        NotModelled({"open-file", "/dev/mmcblk0"}, "open of /dev/mmcblk0"),
        NotModelled({"become-another", "/usr/bin/true"},
                    "execve of /usr/bin/true, which would not run on the board; name the program "
                    "itself"),
        NotModelled({"write-from-a-fork", "/sys/class/gpio/export"},
                    "write of /sys/class/gpio/export in a process that the program forked off"),
        NotModelled({"look-from-a-fork", "/sys/class/gpio/export"},
                    "access of /sys/class/gpio/export in a process that the program forked off"),
        Trouble{{"status", "3"}, 4, "the program ended with status 3 " + kAtTheStart}));

TEST(ExitStatusOfARun, IsZeroWhenTheProgramEndsWell) {
    const CommandResult run = SimulateTrouble({"status", "0"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.error, "");
}

TEST(ExitStatusOfARun, IsADeadlocksWhenNoStepBegins) {
    const TestFolder folder;
    WriteText(folder.Path("scenario"), "[card]\npresent = false");
    const auto run = [&](const Words& options) {
        Words all{"--scenario", folder.Path("scenario"), "--summary", folder.Path("summary")};
        all.insert(all.end(), options.begin(), options.end());
        return Simulate(all, {Binary("tavrelin")});
    };
    const CommandResult stalled = run({"--stall", "1800"});
    EXPECT_EQ(stalled.status, 11);
    EXPECT_EQ(stalled.error,
              "simulate: no step for 0.5 board hours (--stall sets it) in step 1, at 1803.042 s of "
              "board time: thread 1 waits for the end of thread 4; thread 4 waits for the end of "
              "its sleep\n");
    EXPECT_THAT(TextOf(folder.Path("summary")), testing::StartsWith("end = \"stalled\"\n"));
    EXPECT_EQ(run({"--stall", "1800", "--board-time", "1800"}).status, 0);
    EXPECT_EQ(run({"--stall", "0", "--board-time", "100000"}).status, 0);
    EXPECT_THAT(run({}).error, testing::StartsWith("simulate: no step for 24 board hours "));
}

TEST(ExitStatusOfARun, IsNoDeadlocksForAProgramThatShowsNoSteps) {
    EXPECT_EQ(SimulateTrouble({"sleep", "1000000000"}).status, 0);
}

/// What `simulate` says of a program that it does not run, after "simulate: " and its name.
std::string Refusal(const std::string& program, int status) {
    const CommandResult run = Simulate({}, {program, "speak"});
    EXPECT_EQ(run.status, status);
    EXPECT_EQ(run.output, "");
    const std::string intro = "simulate: " + program + ": ";
    EXPECT_THAT(run.error, testing::StartsWith(intro));
    return run.error.substr(std::min(intro.size(), run.error.size()));
}

TEST(ExitStatusOfARun, TellsAStaticProgramBeforeItRuns) {
    EXPECT_EQ(Refusal(testProgram("static-troublemaker"), 14),
              "statically linked, the simulated board cannot stand under it\n");
}

TEST(ExitStatusOfARun, TellsAScriptBeforeItRuns) {
    const TestFolder folder;
    const std::string script = folder.Path("script");
    WriteText(script, "#!/bin/sh\necho ran\n");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    EXPECT_EQ(Refusal(script, 14),
              "not an ELF program; name the program itself, not a script around it\n");
}

TEST(ExitStatusOfARun, TellsAProgramThatIsNotThere) {
    const TestFolder folder;
    WriteText(folder.Path("text"), "no program");
    EXPECT_EQ(Refusal("no-such-program-anywhere", 15), "no such program in PATH\n");
    EXPECT_EQ(Refusal("/nowhere/at-all", 15), "no such program\n");
    EXPECT_EQ(Refusal(folder.Path("text"), 15), "not executable\n");
    EXPECT_EQ(Refusal("/usr/bin", 15), "a folder; name the program in it\n");
}

TEST(ExitStatusOfARun, LooksProgramsUpAsAShellDoes) {
    const TestTools tools;
    std::filesystem::create_symlink(testProgram("troublemaker"), tools.Path("found"));
    EXPECT_EQ(Simulate({}, {"found", "status", "0"}).status, 0);
    const CommandResult failed = Simulate({}, {"found", "status", "1"});
    EXPECT_EQ(failed.status, 4);
    EXPECT_EQ(failed.error, "simulate: the program ended with status 1 " + kAtTheStart + "\n");
}

} // namespace
} // namespace tavrelin
