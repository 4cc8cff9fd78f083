// follow: which records it prints, whatever becomes of their files.

#include "tests/log/Following.h"
#include "tests/log/LogProgram.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace tavrelin {
namespace {

namespace fs = std::filesystem;
using testing::Each;
using testing::HasSubstr;
using testing::SizeIs;

TEST_F(Following, PrintsEachNewResultAtOnceAsResultsWould) {
    WriteText(day_, Result("2026-03-07 09:00.17"));
    Follow();
    Append(day_, "2026-03-07 09:0:33, 2387098,Color Development (debubbling),,\n" +
                     Result("2026-03-07 09:00.34", "nan"));
    const std::string printed = Next();
    EXPECT_EQ(printed, Json("2026-03-07T09:00:34", "null"));
    EXPECT_EQ(printed, LinesOf(RunLog({"results", "--json", day_}).output).back());
    Append(day_, Result("2026-03-07 09:00.51", "1") + Result("2026-03-07 09:01.08", "2"));
    EXPECT_EQ(Next(), Json("2026-03-07T09:00:51", "1"));
    EXPECT_EQ(Next(), Json("2026-03-07T09:01:08", "2"));
    EXPECT_EQ(error_.Rest(), "");
}

TEST_F(Following, PrintsTheReadingsWhenAskedTo) {
    Follow({"--samples"});
    Append(day_,
           "2026-03-07 09:0:33, 2387098,Flush \"slow\", twice,,\n" + Result("2026-03-07 09:00.34"));
    const std::string printed = Next();
    EXPECT_EQ(printed,
              R"({"time":"2026-03-07T09:00:33","reading":2387098,"step":"Flush \"slow\", twice"})");
    EXPECT_EQ(printed, LinesOf(RunLog({"samples", "--json", day_}).output).front());
    EXPECT_EQ(Next(), Json("2026-03-07T09:00:34"));
}

TEST_F(Following, BeginsEarlierWhenAskedToAndShowsTheZone) {
    WriteText(day_, Result("2026-03-07 09:00.17", "1") + Result("2026-03-07 09:00.34", "2"));
    Follow({"--from", "2026-03-07T09:00:34", "--zone", "Europe/Berlin"});
    EXPECT_EQ(Next(), Json("2026-03-07T09:00:34+01:00", "2"));
}

TEST_F(Following, GoesOnAfterMidnightAndWithWhatTheOldDayStillGets) {
    WriteText(day_, Result("2026-03-07 23:59.40"));
    Follow();
    Append(next_, Result("2026-03-08 00:00.05", "1"));
    EXPECT_EQ(Next(), Json("2026-03-08T00:00:05", "1"));
    Append(day_, Result("2026-03-07 23:59.59", "2"));
    EXPECT_EQ(Next(), Json("2026-03-07T23:59:59", "2"));
    Append(next_, Result("2026-03-08 00:00.22", "3"));
    EXPECT_EQ(Next(), Json("2026-03-08T00:00:22", "3"));
}

TEST_F(Following, WaitsForTheRestOfARecordThatIsTorn) {
    const std::string record = Result("2026-03-07 09:00.17");
    WriteText(day_, "2026-03-07 09:0:16,   20000,Flush,,\n" + record.substr(0, 30));
    Follow();
    Append(day_, record.substr(30) + record.substr(0, 10));
    EXPECT_EQ(Next(), Json("2026-03-07T09:00:17"));
    Append(day_, record.substr(10, 20));
    Append(day_, record.substr(30));
    EXPECT_EQ(Next(), Json("2026-03-07T09:00:17"));
    EXPECT_EQ(error_.Rest(), "");
}

TEST_F(Following, NamesAndCountsLinesThatHoldNoRecord) {
    Follow();
    const std::string record = Result("2026-03-07 09:00.17");
    Append(day_, std::string("\x01\xff\0\"\n", 5) + record.substr(0, 30) + "\n" + record);
    EXPECT_EQ(Next(), Json("2026-03-07T09:00:17"));
    EXPECT_EQ(error_.Line(), "tavrelin-log: " + day_ +
                                 ": unknown: \"\\u0001\\ufffd\\u0000\\\"\" (1 since the start)");
    EXPECT_EQ(error_.Line(), "tavrelin-log: " + day_ +
                                 ": torn: \"2026-03-07 09:00.17,,,0.1,171.\" (2 since the start)");
    std::string rubbish;
    for (int line = 0; line < 1000; ++line) {
        rubbish += "rubbish\n";
    }
    Append(day_, rubbish);
    ExpectNothingNew(day_);
    follower_->AwaitSleep();
    EXPECT_THAT(LinesOf(error_.Rest()), SizeIs(testing::Lt(100U)));
}

TEST_F(Following, BeginsAnewWithAFileThatWasCutToNothing) {
    WriteText(day_, Result("2026-03-07 09:00.17") + Result("2026-03-07 09:00.34"));
    Follow();
    ASSERT_EQ(::truncate(day_.c_str(), 0), 0);
    Append(day_, Result("2026-03-07 10:00.17", "1"));
    EXPECT_EQ(Next(), Json("2026-03-07T10:00:17", "1"));
    ExpectNothingNew(day_);
}

TEST_F(Following, GoesOnWithTheFirstNewLineOfAFileThatWasCutBack) {
    const std::string first = Result("2026-03-07 09:00.17");
    WriteText(day_, first + Result("2026-03-07 09:00.34"));
    Follow();
    ASSERT_EQ(::truncate(day_.c_str(), static_cast<off_t>(first.size())), 0);
    Append(day_, Result("2026-03-07 10:00.17", "1"));
    EXPECT_EQ(Next(), Json("2026-03-07T10:00:17", "1"));
    ExpectNothingNew(day_);
}

TEST_F(Following, PrintsNothingTwiceOfAFileThatWasCutBackFar) {
    std::string content;
    for (int minute = 10; minute < 60; ++minute) {
        for (int second = 10; second < 60; ++second) {
            content +=
                Result("2026-03-07 09:" + std::to_string(minute) + "." + std::to_string(second));
        }
    }
    WriteText(day_, content);
    Follower& follower = Follow();
    const std::size_t line = Result("2026-03-07 09:10.10").size();
    ASSERT_EQ(::truncate(day_.c_str(), static_cast<off_t>(20 * line)), 0);
    follower.AwaitSleep();
    std::string later;
    for (std::size_t i = 20; i < content.size() / line; ++i) {
        later += Result("2026-03-07 10:00.17", "1");
    }
    Append(day_, later + Result("2026-03-07 11:00.17", "2"));
    std::string shown = Next();
    while (shown == Json("2026-03-07T10:00:17", "1")) {
        shown = Next();
    }
    EXPECT_EQ(shown, Json("2026-03-07T11:00:17", "2"));
}

TEST_F(Following, PrintsNothingTwiceOfAFileThatBeganTorn) {
    const std::string first = Result("2026-03-07 09:00.17");
    WriteText(day_, first.substr(0, 30));
    Follower& follower = Follow();
    Append(day_, first.substr(30));
    EXPECT_EQ(Next(), Json("2026-03-07T09:00:17"));
    ASSERT_EQ(::truncate(day_.c_str(), 0), 0);
    follower.AwaitSleep();
    Append(day_, first);
    follower.AwaitSleep();
    ExpectNothingNew(day_);
}

TEST_F(Following, PrintsNothingTwiceOfAFileThatIsWrittenAgain) {
    std::string content;
    for (int second = 10; second < 60; ++second) { // more than by which a place is known again
        for (int minute = 10; minute < 30; ++minute) {
            content +=
                Result("2026-03-07 09:" + std::to_string(minute) + "." + std::to_string(second));
        }
    }
    WriteText(day_, content);
    Follower& follower = Follow();
    ASSERT_EQ(::truncate(day_.c_str(), 0), 0);
    follower.AwaitSleep();
    Append(day_, content.substr(0, 1000));
    follower.AwaitSleep();
    Append(day_, content.substr(1000));
    ExpectNothingNew(day_);
    ASSERT_EQ(::truncate(day_.c_str(), 0), 0);
    Append(day_, Result("2026-03-07 10:00.17", "1"));
    EXPECT_EQ(Next(), Json("2026-03-07T10:00:17", "1"));
}

TEST_F(Following, KnowsAReplacedFileByItsContent) {
    const std::string old = Result("2026-03-07 09:00.17");
    WriteText(day_, old);
    Follow();
    WriteText(card_ + "/other", old + Result("2026-03-07 09:00.34", "1"));
    fs::rename(card_ + "/other", day_);
    EXPECT_EQ(Next(), Json("2026-03-07T09:00:34", "1"));
    WriteText(card_ + "/other", Result("2026-03-07 09:05.00", "2") +
                                    Result("2026-03-07 09:05.17", "3") +
                                    Result("2026-03-07 09:05.34", "4"));
    fs::rename(card_ + "/other", day_);
    EXPECT_EQ(Next(), Json("2026-03-07T09:05:00", "2"));
    EXPECT_EQ(Next(), Json("2026-03-07T09:05:17", "3"));
    EXPECT_EQ(Next(), Json("2026-03-07T09:05:34", "4"));
}

TEST_F(Following, SurvivesThatTheFolderGoesAndComesBack) {
    const std::string away = folder_.Path("away");
    const std::string old = Result("2026-03-07 09:00.17");
    WriteText(day_, old);
    Follower& follower = Follow();
    fs::rename(card_, away);
    follower.AwaitSleep();
    Append(away + "/2026-03-07_logfile.csv", Result("2026-03-07 09:00.34", "1"));
    fs::rename(away, card_);
    EXPECT_EQ(Next(), Json("2026-03-07T09:00:34", "1"));
    fs::remove_all(card_);
    follower.AwaitSleep();
    fs::create_directory(card_);
    WriteText(day_, old + Result("2026-03-07 09:00.34", "1") + Result("2026-03-07 09:00.51", "2"));
    EXPECT_EQ(Next(), Json("2026-03-07T09:00:51", "2"));
}

TEST_F(Following, WaitsForAFolderThatIsNotThereYet) {
    const std::string deep = folder_.Path("not/yet/there");
    Follower follower({deep + "/"}, output_.Path(), error_.Path());
    follower.AwaitSleep();
    fs::create_directories(deep);
    Append(deep + "/2026-03-07_logfile.csv", Result("2026-03-07 09:00.17"));
    EXPECT_EQ(Next(), Json("2026-03-07T09:00:17"));
}

TEST_F(Following, TellsOnceWhyAFileCannotBeReadAndReadsTheOthers) {
    fs::create_directory(day_);
    Follow();
    fs::remove(day_);
    ASSERT_EQ(::mkfifo(day_.c_str(), 0600), 0);
    Append(next_, Result("2026-03-08 00:00.05"));
    EXPECT_EQ(Next(), Json("2026-03-08T00:00:05"));
    EXPECT_THAT(LinesOf(error_.Rest()), Each(HasSubstr(day_)));
}

TEST_F(Following, MissesNothingWhenTheKernelDropsNotices) {
    Follower& follower = Follow();
    follower.Signal(SIGSTOP);
    const int most = std::stoi(TextOf("/proc/sys/fs/inotify/max_queued_events"));
    for (int i = 0; i <= most / 2; ++i) { // no two alike, for those are one
        Append(card_ + "/one", "x");
        Append(card_ + "/two", "x");
    }
    Append(day_, Result("2026-03-07 09:00.17"));
    follower.Signal(SIGCONT);
    EXPECT_EQ(Next(), Json("2026-03-07T09:00:17"));
}

TEST_F(Following, PassesOverALinkThatLeadsNowhere) {
    Follow();
    std::filesystem::create_symlink(folder_.Path("nowhere"), next_);
    ExpectNothingNew(day_);
}

TEST_F(Following, EndsWhenItsFolderHasBecomeALinkToItself) {
    Follower& follower = Follow();
    std::filesystem::remove(card_);
    follower.AwaitSleep();
    std::filesystem::create_symlink(card_, card_);
    EXPECT_EQ(follower.AwaitEnd(), 1);
    EXPECT_THAT(error_.Line(), testing::EndsWith("/card: Too many levels of symbolic links"));
}

TEST_F(Following, HoldsNoFileOfTheCardOpen) {
    WriteText(day_, Result("2026-03-07 09:00.17"));
    Follower& follower = Follow();
    Append(day_, Result("2026-03-07 09:00.34"));
    EXPECT_EQ(Next(), Json("2026-03-07T09:00:34"));
    follower.AwaitSleep();
    EXPECT_THAT(follower.OpenFiles(), Each(testing::Not(HasSubstr(card_))));
}

} // namespace
} // namespace tavrelin
