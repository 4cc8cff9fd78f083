// The files of a run: its root folder, events and summary.

#include "tests/simulator/Launcher.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/Text.h"

#include "simulator/launcher/RunRoot.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

namespace fs = std::filesystem;

constexpr int cannotStart = 15;

class RunFiles : public testing::Test {
  protected:
    std::string file(const std::string& name) const { return folder.File(name); }
    /// The line of a launcher that cannot start with these options.
    static std::string refusal(const Words& options) {
        const CommandResult run = simulateTrouble({"status", "0"}, options);
        EXPECT_EQ(run.status, cannotStart);
        return run.error;
    }

    TemporaryFolder folder;
};

TEST_F(RunFiles, AGivenRootIsMadeAndStays) {
    const std::string root = file("deep/root");
    EXPECT_EQ(simulate({"--root", root, "--measurements", "1"}, {binary("tavrelin")}).status, 0);
    EXPECT_TRUE(fs::exists(root + "/card/2026-03-07_logfile.csv"));
}

TEST_F(RunFiles, AnEmptyFolderMayBeTheRoot) {
    fs::create_directory(file("root"));
    EXPECT_EQ(simulateTrouble({"status", "0"}, {"--root", file("root")}).status, 0);
}

TEST_F(RunFiles, WhatAnEarlierRunLeftIsRefused) {
    fs::create_directories(file("root/card"));
    EXPECT_EQ(refusal({"--root", file("root")}),
              "simulate: --root " + file("root") +
                  ": not empty; what an earlier run left would change this one\n");
}

TEST_F(RunFiles, AFileIsNoRoot) {
    WriteText(file("text"), "text");
    EXPECT_EQ(refusal({"--root", file("text")}),
              "simulate: --root " + file("text") + ": cannot be made a folder\n");
    EXPECT_EQ(refusal({"--root", file("text/below")}),
              "simulate: --root " + file("text/below") + ": cannot be made a folder\n");
}

TEST_F(RunFiles, AFolderOfTheRunsOwnGoesWithIt) {
    std::string path;
    {
        const sim::RunRoot own("");
        path = own.path();
        EXPECT_EQ(own.problem(), "");
        WriteText(path + "/file", "text");
        EXPECT_TRUE(fs::is_directory(path));
    }
    EXPECT_FALSE(fs::exists(path));
    fs::create_directory(file("given"));
    {
        const sim::RunRoot given(file("given"));
        EXPECT_EQ(given.path(), fs::canonical(file("given")));
    }
    EXPECT_TRUE(fs::exists(file("given")));
}

TEST_F(RunFiles, EventsAndSummaryMustBeWritable) {
    for (const std::string option : {"--events", "--summary"}) {
        for (const std::string path : {"/nowhere/file", "/"}) {
            EXPECT_EQ(refusal({option, path}),
                      "simulate: " + option + " " + path +
                          ": cannot be written to; takes a file in a folder that is there\n");
        }
    }
    EXPECT_EQ(refusal({"--events", file("same"), "--summary", file("same")}),
              "simulate: --summary " + file("same") +
                  ": holds the events already; takes another file\n");
}

TEST_F(RunFiles, AnEventFileIsWrittenAnew) {
    WriteText(file("events"), std::string(10'000, 'x'));
    EXPECT_EQ(simulateTrouble({"sleep", "5"}, {"--events", file("events")}).status, 0);
    EXPECT_EQ(TextOf(file("events")), "0 1 sleep - 5000 us\n");
}

TEST_F(RunFiles, TheLastEventsBeforeACrashAreThere) {
    simulateTrouble({"crash-after-export", "7"}, {"--events", file("events")});
    EXPECT_EQ(TextOf(file("events")), "0 1 write /sys/class/gpio/export \"7\"\n"
                                      "0 1 sleep - 1500000 us\n"
                                      "1500000 1 write /sys/class/gpio/export \"7\" EBUSY\n");
}

TEST_F(RunFiles, TheLastEventsBeforeAStopAreThere) {
    simulateTrouble({"sleep-again", "60000"}, {"--events", file("events"), "--real-time", "0.2"});
    const Words events = LinesOf(TextOf(file("events")));
    ASSERT_GT(events.size(), 10'000U) << "some buffers full";
    for (std::size_t i = 0; i < events.size(); ++i) {
        ASSERT_EQ(events[i], std::to_string(i * 60'000'000) + " 1 sleep - 60000000 us");
    }
}

TEST_F(RunFiles, TheSummaryTellsHowTheRunWent) {
    simulate({"--summary", file("summary"), "--measurements", "1"}, {binary("tavrelin")});
    const std::string text = TextOf(file("summary"));
    EXPECT_TRUE(Contains(text, "end = \"limit reached: measurements\"\n"
                               "status = 0\n"
                               "board_time_us = "));
    EXPECT_TRUE(Contains(text, "steps = 17\nmeasurements = 1\n\n[calls]\naccess = "));
    for (const char* name : {"[at_step_200]", "[at_last]", "heap_bytes = ", "resident_bytes = ",
                             "board_handles = ", "host_descriptors = ", "threads = "}) {
        EXPECT_TRUE(Contains(text, name)) << name;
    }
}

TEST_F(RunFiles, TheSummaryTellsATroubledEnd) {
    const auto summary = [&](const Words& trouble, const Words& options = {}) {
        Words all{"--summary", file("summary")};
        all.insert(all.end(), options.begin(), options.end());
        simulateTrouble(trouble, all);
        const Words lines = LinesOf(TextOf(file("summary")));
        return lines.at(0) + ", " + lines.at(1);
    };
    EXPECT_EQ(summary({"status", "0"}), "end = \"program ended\", status = 0");
    EXPECT_EQ(summary({"status", "3"}), "end = \"program failed\", status = 4");
    EXPECT_EQ(summary({"segfault"}), "end = \"crashed\", status = 10");
    EXPECT_EQ(summary({"one-mutex-twice"}), "end = \"deadlock\", status = 11");
    EXPECT_EQ(summary({"spin"}, {"--real-time", "0.1"}), "end = \"real time limit\", status = 12");
    EXPECT_EQ(summary({"leave-a-thread"}), "end = \"unmodelled call\", status = 13");
    EXPECT_EQ(summary({"sleep-again", "10"}, {"--board-time", "1"}),
              "end = \"limit reached: board time\", status = 0");
}

} // namespace
} // namespace tavrelin
