// What becomes of a run whose output nobody takes, or that somebody ends from outside.

#include "tests/simulator/Launcher.h"

#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>

namespace tavrelin {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr int kCannotStart = 15;

class Output : public testing::Test {
  protected:
    std::string File(const std::string& name) const { return folder.Path(name); }
    /// A shell's command, in which $simulate is the launcher with free calls, $tavrelin the
    /// instrument and $folder the test's own.
    CommandResult Shell(const std::string& command) const {
        return RunCommand({"sh", "-c",
                           "simulate='" + Binary("simulate") + " --io-cost none' tavrelin=" +
                               Binary("tavrelin") + " folder=" + folder.Path() + "; " + command});
    }

    TestFolder folder;
};

TEST_F(Output, ThatIsFullEndsTheRun) {
    const CommandResult run = Shell("$simulate --summary $folder/sum -- $tavrelin >/dev/full");
    EXPECT_EQ(run.status, kCannotStart);
    EXPECT_THAT(run.error, StartsWith("simulate: standard output: No space left on device before "
                                      "the first step, at "));
    EXPECT_EQ(LinesOf(run.error).size(), 1U);
    EXPECT_THAT(TextOf(File("sum")), StartsWith("end = \"output lost\"\nstatus = 15\n"));
}

TEST_F(Output, ThatIsClosedEndsTheRun) {
    const CommandResult run = Shell("$simulate -- $tavrelin >&-");
    EXPECT_EQ(run.status, kCannotStart);
    EXPECT_THAT(run.error, StartsWith("simulate: standard output: Bad file descriptor "));
    EXPECT_EQ(Shell("$simulate -- " + testProgram("troublemaker") + " status 0 >&- <&-").status, 0)
        << "a program that shows nothing does not miss it";
}

TEST_F(Output, WhoseReaderGoesAwayEndsTheRun) {
    for (const std::string ignored : {"", "trap '' PIPE; "}) {
        const CommandResult run = Shell("{ " + ignored +
                                        "$simulate --summary $folder/sum -- $tavrelin; "
                                        "echo $? >$folder/status; } | head -n 3");
        EXPECT_THAT(run.error, StartsWith("simulate: the reader of standard output went away "));
        EXPECT_EQ(LinesOf(run.output).size(), 3U);
        EXPECT_EQ(TextOf(File("status")), "141\n");
        EXPECT_THAT(TextOf(File("sum")), StartsWith("end = \"reader went away\"\nstatus = 141\n"));
    }
}

TEST_F(Output, MayHoldTheEventsToo) {
    const auto sorted = [](const std::string& text) {
        Words lines = LinesOf(text);
        std::sort(lines.begin(), lines.end());
        return lines;
    };
    const auto run = [&](const std::string& events) {
        return Simulate({"--measurements", "1", "--events", events}, {Binary("tavrelin")}).output;
    };
    const std::string both = run("-");
    const std::string console = run(File("events"));
    EXPECT_EQ(sorted(both), sorted(console + TextOf(File("events"))));
    EXPECT_LT(both.find("export \"0\""), both.find("Priming"));
}

TEST_F(Output, TellsEveryCallWhereAskedTo) {
    const auto eventsWith = [&](const Words& options) {
        Words arguments{"--events", File("events")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        Simulate(arguments, {"cat", "/sys/class/pwm/pwmchip0/npwm"});
        return TextOf(File("events"));
    };
    const std::string told = R"(1 read /sys/class/pwm/pwmchip0/npwm "4\n")";
    EXPECT_THAT(eventsWith({}), AllOf(HasSubstr(told), Not(HasSubstr(" call "))));
    EXPECT_THAT(eventsWith({"--every-call"}),
                AllOf(HasSubstr(told), HasSubstr("1 call /sys/class/pwm/pwmchip0/npwm open\n"),
                      HasSubstr("1 call /sys/class/pwm/pwmchip0/npwm close\n")));
}

TEST_F(Output, ThatIsNoFileOfItsOwnIsRefused) {
    WriteText(File("scenario"), "");
    std::filesystem::copy(testProgram("troublemaker"), File("program"));
    for (const std::string option : {"--events", "--summary", "--vcd"}) {
        for (const std::string taken : {"scenario", "program"}) {
            const CommandResult run =
                Simulate({"--scenario", File("scenario"), option, File(taken)},
                         {File("program"), "status", "0"});
            EXPECT_EQ(run.status, kCannotStart);
            EXPECT_EQ(run.error, "simulate: " + option + " " + File(taken) + ": holds the " +
                                     taken + " already; takes another file\n");
        }
    }
}

TEST_F(Output, OfTheSummaryThatIsFullIsTold) {
    const CommandResult run = SimulateTrouble({"status", "0"}, {"--summary", "/dev/full"});
    EXPECT_EQ(run.status, kCannotStart);
    EXPECT_THAT(run.error, StartsWith("simulate: --summary /dev/full: No space left on device"));
}

TEST_F(Output, OfEventsCanBeFollowed) {
    const CommandResult run =
        Shell("$simulate --pace real --events $folder/events -- $tavrelin >/dev/null & "
              "sleep 2; cat $folder/events; kill -TERM $!; wait $!");
    EXPECT_THAT(run.output, HasSubstr(" sleep - 2000000 us\n"));
}

/// Ends a run by a signal in its first seconds, with the last line of the events that it wrote.
class InterruptedRun : public Output, public testing::WithParamInterface<std::string> {};

TEST_P(InterruptedRun, TellsAllThatIsKnown) {
    const CommandResult run =
        Shell("timeout --preserve-status --foreground -s " + GetParam() +
              " 2 $simulate --pace 5 --summary $folder/sum --events $folder/events --board "
              "$folder/board -- $tavrelin >/dev/null");
    EXPECT_THAT(run.error, HasSubstr("simulate: interrupted\n"));
    EXPECT_GT(run.status, 128);
    EXPECT_THAT(TextOf(File("sum")),
                StartsWith("end = \"interrupted\"\nstatus = " + std::to_string(run.status) + "\n"));
    EXPECT_THAT(TextOf(File("sum")), HasSubstr("[calls]\naccess = "));
    EXPECT_THAT(TextOf(File("board")), HasSubstr("line A2 exported "));
    const Words events = LinesOf(TextOf(File("events")));
    EXPECT_THAT(events.back(), testing::MatchesRegex("[0-9]+ [0-9]+ [a-z]+ .*"));
}

INSTANTIATE_TEST_SUITE_P(By, InterruptedRun, testing::Values("HUP", "INT", "QUIT", "PIPE", "TERM"));

TEST_F(Output, HangingUpIsNothingToARunThatIgnoresIt) {
    const CommandResult run =
        Shell("trap '' HUP; $simulate --pace real -- $tavrelin >/dev/null & sleep 0.5; "
              "kill -HUP $!; sleep 0.5; kill -TERM $!; wait $!");
    EXPECT_EQ(run.status, 128 + 15);
}

TEST_F(Output, OfARunGoesWithItOrWithTheNext) {
    const std::string start = "$simulate --pace real -- $tavrelin >/dev/null & sleep 0.5; "
                              "own=$(readlink /proc/$!/fd/* | grep tavrelin-run); test -d $own && ";
    EXPECT_EQ(Shell(start + "kill -TERM $!; wait $!; test ! -e $own").status, 0);
    EXPECT_EQ(Shell(start + "kill -KILL $!; wait $!; $simulate --steps 1 -- $tavrelin "
                            ">/dev/null; test ! -e $own")
                  .status,
              0);
}

} // namespace
} // namespace tavrelin
