// The files of a run: its root folder, events, waveforms and the board's state.

#include "tests/simulator/Launcher.h"

#include "tests/support/GoldenFile.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"
#include "tests/support/ValueChanges.h"

#include "simulator/run/RunRoot.h"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>

namespace tavrelin {
namespace {

namespace fs = std::filesystem;

constexpr int kCannotStart = 15;

class RunFiles : public testing::Test {
  protected:
    std::string File(const std::string& name) const { return folder.Path(name); }
    /// What a launcher says that cannot start with an option, after "simulate: " and the option.
    static std::string Refusal(const std::string& option, const std::string& path,
                               const Words& others = {}) {
        Words options = others;
        options.insert(options.end(), {option, path});
        const CommandResult run = SimulateTrouble({"status", "0"}, options);
        EXPECT_EQ(run.status, kCannotStart);
        const std::string intro = "simulate: " + option + " " + path + ": ";
        EXPECT_THAT(run.error, testing::StartsWith(intro));
        return run.error.substr(std::min(intro.size(), run.error.size()));
    }

    TestFolder folder;
};

TEST_F(RunFiles, AGivenRootIsMadeAndStays) {
    const std::string root = File("deep/root");
    EXPECT_EQ(Simulate({"--root", root, "--measurements", "1"}, {Binary("tavrelin")}).status, 0);
    EXPECT_TRUE(fs::exists(root + "/card/2026-03-07_logfile.csv"));
}

TEST_F(RunFiles, AnEmptyFolderMayBeTheRoot) {
    fs::create_directory(File("root"));
    EXPECT_EQ(SimulateTrouble({"status", "0"}, {"--root", File("root")}).status, 0);
}

TEST_F(RunFiles, WhatAnEarlierRunLeftIsRefused) {
    fs::create_directories(File("root/card"));
    EXPECT_EQ(
        Refusal("--root", File("root")),
        "not empty; what an earlier run left would change this one (--resume goes on with it)\n");
}

TEST_F(RunFiles, AFolderWithoutARunCannotBeResumed) {
    fs::create_directories(File("root/card"));
    EXPECT_EQ(Refusal("--root", File("root"), {"--resume"}),
              "holds no earlier run that could be resumed\n");
    EXPECT_EQ(SimulateTrouble({"status", "0"}, {"--resume"}).error,
              "simulate: --resume needs --root with the folder of an earlier run (simulate --help "
              "explains every option)\n");
}

TEST_F(RunFiles, ASecondDayGoesOnWithTheFirst) {
    const auto day = [&](const Words& more) {
        Words options{"--root", File("root"), "--measurements", "1"};
        options.insert(options.end(), more.begin(), more.end());
        return Simulate(options, {Binary("tavrelin")});
    };
    EXPECT_EQ(day({}).error, "");
    const std::string log = File("root/card/2026-03-07_logfile.csv");
    const std::string first = TextOf(log);
    // The limit stopped it where it was: lines and channels are made safe before the next start.
    EXPECT_EQ(
        Simulate({"--root", File("root"), "--resume"}, {Binary("tavrelin-service"), "safe-state"})
            .error,
        "");
    const CommandResult again = day({"--resume"});
    EXPECT_EQ(again.error, "");
    EXPECT_THAT(again.output, testing::StartsWith("TAVRELIN,2026-03-07 09:00.1"));
    EXPECT_THAT(TextOf(log), testing::StartsWith(first));
    EXPECT_GT(TextOf(log).size(), first.size());
    EXPECT_EQ(day({"--resume", "--start", "2026-03-08 09:00:00"}).status, 0);
    EXPECT_TRUE(fs::exists(File("root/card/2026-03-08_logfile.csv")));
    EXPECT_THAT(TextOf(File("root/board")), testing::HasSubstr("\nclock 17729604"));
}

TEST_F(RunFiles, ARestartAfterAKillFindsWhatTheKillLeft) {
    const Words root{"--root", File("root"), "--calls", "400"};
    Simulate(root, {Binary("tavrelin")});
    Words again = root;
    again.push_back("--resume");
    EXPECT_THAT(Simulate(again, {Binary("tavrelin")}).error, testing::StartsWith("already used\n"));
}

TEST_F(RunFiles, AFileIsNoRoot) {
    WriteText(File("text"), "text");
    EXPECT_EQ(Refusal("--root", File("text")), "cannot be made a folder\n");
    EXPECT_EQ(Refusal("--root", File("text/below")), "cannot be made a folder\n");
}

TEST_F(RunFiles, AFolderOfTheRunsOwnGoesWithIt) {
    std::string path;
    {
        const sim::RunRoot own("");
        path = own.Path();
        EXPECT_EQ(own.Problem(), "");
        WriteText(path + "/file", "text");
        EXPECT_TRUE(fs::is_directory(path));
    }
    EXPECT_FALSE(fs::exists(path));
    fs::create_directory(File("given"));
    {
        const sim::RunRoot given(File("given"));
        EXPECT_EQ(given.Path(), fs::canonical(File("given")));
    }
    EXPECT_TRUE(fs::exists(File("given")));
}

TEST_F(RunFiles, WhatTheRunWritesMustBeWritable) {
    for (const std::string option : {"--events", "--vcd", "--summary", "--board"}) {
        for (const std::string path : {"/nowhere/file", "/"}) {
            EXPECT_EQ(Refusal(option, path),
                      "cannot be written to; takes a file in a folder that is there\n");
        }
    }
}

TEST_F(RunFiles, OneFileHoldsOneThing) {
    EXPECT_EQ(Refusal("--summary", File("same"), {"--events", File("same")}),
              "holds the events already; takes another file\n");
    EXPECT_EQ(Refusal("--vcd", File("same"), {"--events", File("same")}),
              "holds the events already; takes another file\n");
    EXPECT_EQ(Refusal("--summary", folder.Path() + "/./same", {"--vcd", File("same")}),
              "holds the waveforms already; takes another file\n");
    EXPECT_EQ(Refusal("--board", File("same"), {"--vcd", File("same")}),
              "holds the waveforms already; takes another file\n");
}

TEST_F(RunFiles, AFullDiskIsToldAndEndsNoRun) {
    for (const std::string option : {"--events", "--vcd"}) {
        const CommandResult run =
            SimulateTrouble({"sleep", "5"}, {option, "/dev/full", "--summary", File("summary")});
        EXPECT_EQ(run.status, kCannotStart);
        EXPECT_EQ(run.error, "simulate: " + option +
                                 " /dev/full: No space left on device after 0 bytes; the rest of "
                                 "the run is not in it\n");
        EXPECT_THAT(TextOf(File("summary")),
                    testing::HasSubstr("status = 15\nboard_time_us = 5000\n"));
    }
    EXPECT_EQ(SimulateTrouble({"status", "3"}, {"--vcd", "/dev/full"}).status, 4);
}

TEST_F(RunFiles, AnEventFileIsWrittenAnew) {
    WriteText(File("events"), std::string(10'000, 'x'));
    EXPECT_EQ(SimulateTrouble({"sleep", "5"}, {"--events", File("events")}).status, 0);
    EXPECT_EQ(TextOf(File("events")), "0 1 sleep - 5000 us\n");
}

TEST_F(RunFiles, TheLastEventsBeforeACrashAreThere) {
    SimulateTrouble({"crash-after-export", "7"}, {"--events", File("events")});
    EXPECT_EQ(TextOf(File("events")), "0 1 write /sys/class/gpio/export \"7\"\n"
                                      "0 1 sleep - 1500000 us\n"
                                      "1500000 1 write /sys/class/gpio/export \"7\" EBUSY\n");
}

TEST_F(RunFiles, TheLastEventsBeforeAStopAreThere) {
    SimulateTrouble({"sleep-again", "60000"}, {"--events", File("events"), "--real-time", "1"});
    const Words events = LinesOf(TextOf(File("events")));
    ASSERT_GT(events.size(), 4'000U) << "two buffers full";
    std::int64_t moment = 0;
    for (const std::string& event : events) {
        ASSERT_EQ(event, std::to_string(moment) + " 1 sleep - 60000000 us");
        moment += 60'000'000;
    }
}

TEST_F(RunFiles, WaveformsAreWholeHoweverTheRunEnds) {
    const auto waves = [&](const Words& trouble, const Words& options = {}) {
        WriteText(File("waves"), std::string(10'000, 'x'));
        Words all{"--vcd", File("waves")};
        all.insert(all.end(), options.begin(), options.end());
        SimulateTrouble(trouble, all);
        const ValueChanges read = ReadValueChanges(TextOf(File("waves")));
        EXPECT_THAT(read.problems, testing::IsEmpty()) << trouble.front();
        EXPECT_EQ(read.types.size(), 30U) << trouble.front();
        return read.end;
    };
    EXPECT_EQ(waves({"status", "3"}), 0);
    EXPECT_EQ(waves({"sleep-again", "300"}, {"--board-time", "1"}), 1'000'000);
    EXPECT_EQ(waves({"one-mutex-twice"}), 0);
    waves({"segfault"});
    waves({"crash-after-export", "7"});
    waves({"spin"}, {"--real-time", "1"});
}

TEST_F(RunFiles, WaveformsOfAStoppedRunReachItsLastMoment) {
    const CommandResult run =
        Simulate({"--vcd", File("waves"), "--real-time", "1"}, {Binary("tavrelin")});
    const ValueChanges read = ReadValueChanges(TextOf(File("waves")));
    EXPECT_EQ(run.status, 12);
    EXPECT_THAT(read.problems, testing::IsEmpty());
    const std::string before = ", at ";
    const std::size_t moment = run.error.find(before);
    ASSERT_NE(moment, std::string::npos) << run.error;
    EXPECT_NEAR(static_cast<double>(read.end) / 1e6,
                std::stod(run.error.substr(moment + before.size())), 1.01);
}

TEST_F(RunFiles, WaveformsOfALauncherThatIsKilledCanBeRead) {
    const std::string script = R"("$0" --pace real --vcd "$1" -- "$2" >"$1.console" &
                                  until [ -s "$1" ]; do sleep 0.05; done
                                  kill -KILL $!
                                  wait $!)";
    const Words command{"sh", "-c", script, Binary("simulate"), File("waves"), Binary("tavrelin")};
    EXPECT_EQ(RunCommand(command).status, 128 + 9);
    EXPECT_THAT(ReadValueChanges(TextOf(File("waves"))).problems, testing::IsEmpty());
}

TEST_F(RunFiles, WaveformsOfAShortRunAreTheseBytes) {
    SimulateTrouble({"sleep", "5"}, {"--vcd", File("waves"), "--start", "2040-01-31 23:59:59"});
    EXPECT_TRUE(MatchesGoldenFile(TextOf(File("waves")), "simulator/golden/waveform.vcd"));
}

TEST_F(RunFiles, TheBoardIsHandedFromProgramToProgram) {
    const auto begin = [&] {
        return Simulate({"--calls", "100", "--board", File("board")}, {Binary("tavrelin")}).error;
    };
    EXPECT_EQ(begin(), "");
    EXPECT_THAT(TextOf(File("board")), testing::StartsWith("line A2 exported in none\n"));
    EXPECT_THAT(begin(), testing::StartsWith("already used\n"));
}

TEST_F(RunFiles, ABoardThatNoRunHasLeftIsRefused) {
    WriteText(File("board"), "line B18 exported in none\nlines B19\n");
    const CommandResult run = SimulateTrouble({"status", "0"}, {"--board", File("board")});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.error, "simulate: " + File("board") + ": is not what --board has written\n");
    EXPECT_THAT(TextOf(File("board")), testing::HasSubstr("lines B19"));
}

TEST_F(RunFiles, ACrashLeavesTheBoardsFileAsItWas) {
    const std::string before = "line B18 exported in none\n";
    WriteText(File("board"), before);
    SimulateTrouble({"crash-after-export", "7"}, {"--board", File("board")});
    EXPECT_EQ(TextOf(File("board")), before);
}

} // namespace
} // namespace tavrelin
