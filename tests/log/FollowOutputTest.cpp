// follow: how it spells records, where they go, and how it ends.

#include "tests/log/Following.h"
#include "tests/log/LogProgram.h"

#include <gmock/gmock.h>

#include <array>
#include <sstream>

namespace tavrelin {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

TEST_F(Following, SpeaksTheLineProtocol) {
    Follow({"--format", "influx", "--samples", "--zone", "Europe/Berlin"});
    Append(day_, "2026-03-07 09:0:33, 2387098,Flush, a=b \\ \"c\",,\n"
                 "2026-03-07 09:0:33,     -12,Flush,,\n"
                 "2026-03-07 09:00.33,,,nan,171.482,-inf,3e+06,2.3871e+06\n");
    // date -d 'TZ="Europe/Berlin" 2026-03-07 09:00:33' +%s
    EXPECT_EQ(Next(), R"(tavrelin_sample,step=Flush\,\ a\=b\ /\ "c" reading=2387098i )"
                      "1772870433000000000");
    EXPECT_EQ(Next(), "tavrelin_sample,step=Flush reading=-12i 1772870433000000001");
    EXPECT_EQ(Next(), "tavrelin_result chlorine=171.482,reference=3e+06,sample=2.3871e+06 "
                      "1772870433000000000");
    Append(day_, "2026-03-07 09:00.34,,,nan,nan,nan,inf,nan\n" + Result("9999-03-07 09:00.34"));
    const std::string nothing = " has nothing that the line protocol could carry";
    EXPECT_EQ(error_.Line(),
              "tavrelin-log: " + day_ + ": the record of 2026-03-07T09:00:34" + nothing);
    EXPECT_EQ(error_.Line(),
              "tavrelin-log: " + day_ + ": the record of 9999-03-07T09:00:34" + nothing);
}

TEST_F(Following, TellsTheTwoHoursOfTheAutumnChangeApart) {
    Follow({"--format", "influx", "--zone", "Europe/Berlin"});
    Append(card_ + "/2026-10-25_logfile.csv",
           Result("2026-10-25 02:59.50") + Result("2026-10-25 02:00.07"));
    EXPECT_THAT(Next(), HasSubstr(" 1792889990000000000")); // 00:59:50 UTC
    EXPECT_THAT(Next(), HasSubstr(" 1792890007000000000")); // 01:00:07 UTC
}

TEST_F(Following, WritesWhatPrometheusScrapes) {
    const std::string file = folder_.Path("tavrelin.prom");
    Follower& follower = Follow({"--format", "prometheus", "--output", file});
    const std::string counters =
        "# HELP tavrelin_results_total Results since the start.\n"
        "# TYPE tavrelin_results_total counter\n"
        "tavrelin_results_total 0\n"
        "# HELP tavrelin_samples_total Detector readings since the start.\n"
        "# TYPE tavrelin_samples_total counter\n"
        "tavrelin_samples_total 0\n"
        "# HELP tavrelin_broken_lines_total Lines that are torn or unknown "
        "since the start.\n"
        "# TYPE tavrelin_broken_lines_total counter\n"
        "tavrelin_broken_lines_total 0\n";
    EXPECT_EQ(TextOf(file), counters);
    const std::ifstream scraped(file); // an old scrape sees the old file to its end
    Append(day_, "2026-03-07 09:0:16,   20000,Dark Count Measurement,,\nrubbish\n" +
                     Result("2026-03-07 09:00.17") +
                     "2026-03-07 09:00.34,,,nan,-inf,20000,3e+06,2.3871e+06\n");
    EXPECT_THAT(error_.Line(), HasSubstr("rubbish"));
    follower.AwaitSleep();
    EXPECT_EQ(TextOf(file),
              "# HELP tavrelin_chlorine Chlorine, in the unit of the calibration, of the latest "
              "result.\n"
              "# TYPE tavrelin_chlorine gauge\n"
              "tavrelin_chlorine -Inf\n"
              "# HELP tavrelin_absorbance Absorbance of the latest result.\n"
              "# TYPE tavrelin_absorbance gauge\n"
              "tavrelin_absorbance NaN\n"
              "# HELP tavrelin_dark_counts Mean detector counts without light of the latest "
              "result.\n"
              "# TYPE tavrelin_dark_counts gauge\n"
              "tavrelin_dark_counts 20000\n"
              "# HELP tavrelin_reference_counts Mean detector counts before the reagent of the "
              "latest result.\n"
              "# TYPE tavrelin_reference_counts gauge\n"
              "tavrelin_reference_counts 3e+06\n"
              "# HELP tavrelin_sample_counts Mean detector counts after the reaction of the latest "
              "result.\n"
              "# TYPE tavrelin_sample_counts gauge\n"
              "tavrelin_sample_counts 2.3871e+06\n"
              "# HELP tavrelin_result_time_seconds Unix time of the latest result.\n"
              "# TYPE tavrelin_result_time_seconds gauge\n"
              "tavrelin_result_time_seconds 1772874034\n"
              "# HELP tavrelin_results_total Results since the start.\n"
              "# TYPE tavrelin_results_total counter\n"
              "tavrelin_results_total 2\n"
              "# HELP tavrelin_samples_total Detector readings since the start.\n"
              "# TYPE tavrelin_samples_total counter\n"
              "tavrelin_samples_total 1\n"
              "# HELP tavrelin_broken_lines_total Lines that are torn or unknown since the "
              "start.\n"
              "# TYPE tavrelin_broken_lines_total counter\n"
              "tavrelin_broken_lines_total 1\n");
    std::stringstream old;
    old << scraped.rdbuf();
    EXPECT_EQ(old.str(), counters);
    EXPECT_FALSE(fs::exists(file + ".new"));
}

TEST_F(Following, AppendsToAFile) {
    const std::string file = folder_.Path("feed");
    WriteText(file, "before\n");
    Follower& follower = Follow({"--output", file});
    Append(day_, Result("2026-03-07 09:00.17"));
    follower.AwaitSleep();
    EXPECT_EQ(TextOf(file), "before\n" + Json("2026-03-07T09:00:17") + "\n");
    EXPECT_EQ(output_.Rest(), "");
}

TEST_F(Following, SaysOnceThatTheDiskIsFullAndGoesOn) {
    Follow({"--output", "/dev/full"});
    Append(day_, Result("2026-03-07 09:00.17") + Result("2026-03-07 09:00.34"));
    EXPECT_EQ(error_.Line(), "tavrelin-log: /dev/full: No space left on device");
    Append(day_, Result("2026-03-07 09:00.51") + "rubbish\n");
    EXPECT_THAT(error_.Line(), HasSubstr("rubbish"));
}

TEST_F(Following, TakesBackWhatTheDiskTookOfARecord) {
    const std::string feed = folder_.Path("feed");
    Follower& follower = Follow({"--output", feed});
    const std::string first = Json("2026-03-07T09:00:17") + "\n";
    follower.LimitFiles(first.size() + 10);
    Append(day_, Result("2026-03-07 09:00.17") + Result("2026-03-07 09:00.34"));
    EXPECT_EQ(error_.Line(), "tavrelin-log: " + feed + ": File too large");
    follower.AwaitSleep();
    EXPECT_EQ(TextOf(feed), first);
    follower.LimitFiles(RLIM_INFINITY);
    Append(day_, Result("2026-03-07 09:00.51"));
    follower.AwaitSleep();
    follower.Signal(SIGTERM);
    EXPECT_EQ(follower.AwaitEnd(), 0);
    EXPECT_EQ(TextOf(feed), first + Json("2026-03-07T09:00:51") + "\n");
}

TEST_F(Following, SaysOnceThatTheExpositionCannotBeWrittenUntilItCan) {
    const std::string file = folder_.Path("later/tavrelin.prom");
    Follower& follower = Follow({"--format", "prometheus", "--output", file});
    EXPECT_EQ(error_.Line(), "tavrelin-log: " + file + ": No such file or directory");
    Append(day_, Result("2026-03-07 09:00.17"));
    follower.AwaitSleep();
    fs::create_directory(folder_.Path("later"));
    Append(day_, Result("2026-03-07 09:00.34") + "rubbish\n");
    EXPECT_THAT(error_.Line(), HasSubstr("rubbish"));
    follower.AwaitSleep();
    EXPECT_THAT(TextOf(file), HasSubstr("tavrelin_results_total 2\n"));
}

TEST_F(Following, EndsAsSoonAsNobodyReads) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    Follower follower({card_}, "/proc/self/fd/" + std::to_string(ends[1]), error_.Path());
    ::close(ends[1]);
    follower.AwaitSleep();
    ::close(ends[0]);
    EXPECT_EQ(follower.AwaitEnd(), 1);
    EXPECT_EQ(error_.Rest(), "tavrelin-log: standard output: Broken pipe\n");
}

TEST_F(Following, EndsWhenNobodyReadsWhatItPrints) {
    WriteText(day_, Result("2026-03-07 09:00.17") + Result("2026-03-07 09:00.34"));
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    ::close(ends[0]);
    Follower follower({card_, "--from", "2026-03-07"}, "/proc/self/fd/" + std::to_string(ends[1]),
                      error_.Path());
    EXPECT_EQ(follower.AwaitEnd(), 1);
    ::close(ends[1]);
    EXPECT_EQ(error_.Rest(), "tavrelin-log: standard output: Broken pipe\n");
}

TEST_F(Following, EndsWithStatus0WhenItIsToldTo) {
    for (const int signal : {SIGINT, SIGTERM}) {
        Follower& follower = Follow();
        follower.Signal(signal);
        EXPECT_EQ(follower.AwaitEnd(), 0);
        EXPECT_EQ(error_.Rest(), "");
    }
}

TEST_F(Following, EndsThoughItsReaderHasStopped) {
    Follower& follower = Follow({"--samples"});
    std::string much;
    for (int line = 0; line < 2000; ++line) { // more than a pipe holds
        much += "2026-03-07 09:0:16,   20000,Dark Count Measurement,,\n";
    }
    Append(day_, much);
    follower.AwaitSleep();
    follower.Signal(SIGTERM);
    EXPECT_EQ(follower.AwaitEnd(), 0);
}

TEST_F(Following, SleepsWhileNothingHappens) {
    Follower& follower = Follow();
    const std::string before = follower.Sleeps();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_EQ(follower.Sleeps(), before);
}

TEST(FollowingWrongly, IsToldInOneLine) {
    const TestFolder folder;
    const std::string file = folder.Path("file");
    WriteText(file, "");
    CommandResult run = RunLog({"follow", "--format", "prometheus"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.error, "tavrelin-log: --format prometheus needs --output FILE; see tavrelin-log "
                         "follow --help\n");
    EXPECT_EQ(RunLog({"follow", "--format", "xml"}).status, 2);
    run = RunLog({"follow", file});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.error, "tavrelin-log: " + file + ": not a folder\n");
    run = RunLog({"follow", "--output", folder.Path("none/feed"), folder.Path()});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.error,
              "tavrelin-log: " + folder.Path("none/feed") + ": No such file or directory\n");
}

} // namespace
} // namespace tavrelin
