// What the summary of a run tells.

#include "tests/simulator/Launcher.h"

#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <algorithm>
#include <gmock/gmock.h>

namespace tavrelin {
namespace {

class Summary : public testing::Test {
  protected:
    TestFolder folder;
    const std::string summary = folder.Path("summary");
};

TEST_F(Summary, TellsHowTheRunWent) {
    Simulate({"--summary", summary, "--measurements", "1"}, {Binary("tavrelin")});
    const std::string text = TextOf(summary);
    EXPECT_THAT(text, testing::HasSubstr("end = \"limit reached: measurements\"\n"
                                         "status = 0\n"
                                         "board_time_us = "));
#ifdef __x86_64__
    const std::string gate = "true";
#else
    const std::string gate = "false";
#endif
    EXPECT_THAT(text, testing::HasSubstr("steps = 17\nmeasurements = 1\ngate = " + gate +
                                         "\n\n[calls]\naccess = "));
    for (const char* name : {"[at_step_200]", "[at_last]", "heap_bytes = ", "resident_bytes = ",
                             "board_handles = ", "host_descriptors = ", "threads = "}) {
        EXPECT_THAT(text, testing::HasSubstr(name)) << name;
    }
}

TEST_F(Summary, TellsTheCourseOfMemoryAndHowDeepStacksGo) {
    WriteText(folder.Path("scenario"), "threads.stacks = true\n");
    Simulate({"--scenario", folder.Path("scenario"), "--summary", summary, "--steps", "1900"},
             {Binary("tavrelin")});
    const Words lines = LinesOf(TextOf(summary));
    const auto course = std::find(lines.begin(), lines.end(), "[footprints]");
    const auto stacks = std::find(course, lines.end(), "[stacks]");
    EXPECT_THAT(Words(course, stacks),
                testing::Contains(testing::AnyOf("threads = [1, 1]", "threads = [2, 2]")))
        << "a sanitizer has one of its own";
    EXPECT_THAT(Words(course, stacks),
                testing::Contains(testing::MatchesRegex("mappings = .[0-9]+, [0-9]+.")));
    const Words depths(stacks, lines.end());
    ASSERT_EQ(depths.size(), 7U) << "the main thread and five kinds of worker";
    EXPECT_THAT(depths.at(1), testing::MatchesRegex("\"main\" = [0-9]+"));
    std::vector<int> bytes;
    for (std::size_t i = 2; i < depths.size(); ++i) {
        EXPECT_THAT(depths.at(i), testing::MatchesRegex("\"tavrelin.0x[0-9a-f]+\" = [0-9]+"));
        bytes.push_back(std::stoi(depths.at(i).substr(depths.at(i).find('=') + 1)));
    }
    EXPECT_THAT(bytes, testing::Each(testing::Gt(512)));
    EXPECT_THAT(bytes, testing::Contains(testing::Lt(64 << 10))) << "less than is painted";
}

TEST_F(Summary, TellsATroubledEnd) {
    const auto endAfter = [&](const Words& trouble, const Words& options = {}) {
        Words all{"--summary", summary};
        all.insert(all.end(), options.begin(), options.end());
        SimulateTrouble(trouble, all);
        const Words lines = LinesOf(TextOf(summary));
        return lines.at(0) + ", " + lines.at(1);
    };
    EXPECT_EQ(endAfter({"status", "0"}), "end = \"program ended\", status = 0");
    EXPECT_EQ(endAfter({"status", "3"}), "end = \"program failed\", status = 4");
    EXPECT_EQ(endAfter({"segfault"}), "end = \"crashed\", status = 10");
    EXPECT_EQ(endAfter({"one-mutex-twice"}), "end = \"deadlock\", status = 11");
    EXPECT_EQ(endAfter({"spin"}, {"--real-time", "0.1"}), "end = \"real time limit\", status = 12");
    EXPECT_EQ(endAfter({"open-file", "/dev/mmcblk0"}), "end = \"unmodelled call\", status = 13");
    EXPECT_EQ(endAfter({"sleep-again", "10"}, {"--board-time", "1"}),
              "end = \"limit reached: board time\", status = 0");
}

} // namespace
} // namespace tavrelin
