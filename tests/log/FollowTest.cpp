#include "tests/log/LogProgram.h"
#include "tests/support/Fifo.h"
#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace tavrelin {
namespace {

namespace fs = std::filesystem;
using testing::Each;
using testing::HasSubstr;
using testing::SizeIs;

/// `tavrelin-log follow`, ended with this.
class Follower {
  public:
    using Words = std::vector<std::string>;

    /// Its standard output goes to a file or pipe, its standard error to a pipe.
    Follower(Words words, const std::string& output, const std::string& error) {
        words.insert(words.begin(), {InBuild("bin/tavrelin-log"), "follow"});
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        process_ = ::fork();
        if (process_ == 0) {
            ::dup2(::open(output.c_str(), O_WRONLY), STDOUT_FILENO);
            ::dup2(::open(error.c_str(), O_WRONLY), STDERR_FILENO);
            ::execv(arguments.front(), arguments.data());
            ::_exit(127);
        }
    }
    Follower(const Follower&) = delete;
    Follower& operator=(const Follower&) = delete;
    ~Follower() {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            ::waitpid(process_, nullptr, 0);
        }
    }

    /// Waits until it has read what there is and sleeps until something happens.
    void AwaitSleep() const {
        Await("it does not wait", [this] {
            std::string notices;
            for (const auto& descriptor : fs::directory_iterator(Proc("fdinfo"))) {
                notices += TextOf(descriptor.path());
            }
            return Proc("stat", ") S ") && notices.find("inotify wd") != std::string::npos;
        });
    }
    void Signal(int signal) const { ::kill(process_, signal); }
    int AwaitEnd() {
        int status = 0;
        Await("it does not end", [&] { return ::waitpid(process_, &status, WNOHANG) != 0; });
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    std::vector<std::string> OpenFiles() const {
        std::vector<std::string> files;
        for (const auto& descriptor : fs::directory_iterator(Proc("fd"))) {
            files.push_back(fs::read_symlink(descriptor));
        }
        return files;
    }
    /// How often it has slept.
    std::string Sleeps() const {
        return LinesWith(TextOf(Proc("status")), "voluntary_ctxt_switches").front();
    }

  private:
    std::string Proc(const std::string& name) const {
        return "/proc/" + std::to_string(process_) + "/" + name;
    }
    bool Proc(const std::string& name, const std::string& text) const {
        return TextOf(Proc(name)).find(text) != std::string::npos;
    }
    template <typename Condition>
    static void Await(const std::string& otherwise, Condition condition) {
        for (int tries = 0; !condition(); ++tries) {
            if (tries == 30'000) {
                throw std::runtime_error(otherwise);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    pid_t process_ = -1;
};

std::string Result(const std::string& time, const std::string& chlorine = "171.482") {
    return time + ",,,0.1," + chlorine + ",20000,3e+06,2.3871e+06\n";
}

std::string Json(const std::string& time, const std::string& chlorine = "171.482") {
    return R"({"time":")" + time + R"(","absorbance":0.1,"chlorine":)" + chlorine +
           R"(,"dark":20000,"reference":3e+06,"sample":2.3871e+06})";
}

class Following : public testing::Test {
  protected:
    Following() { fs::create_directory(card_); }

    /// Begins to follow, and comes back when it waits.
    Follower& Follow(std::vector<std::string> words = {}) {
        words.push_back(card_);
        follower_.emplace(words, output_.Path(), error_.Path());
        follower_->AwaitSleep();
        return *follower_;
    }
    static void Append(const std::string& path, const std::string& text) {
        std::ofstream(path, std::ios::app) << text;
    }
    /// What is printed next.
    std::string Next() { return output_.Line(); }
    /// Holds that nothing has been printed: what comes next is a record made now.
    void ExpectNothingNew(const std::string& path) {
        Append(path, Result("2026-03-07 23:59.59", "1e+09"));
        EXPECT_EQ(Next(), Json("2026-03-07T23:59:59", "1e+09"));
    }

    TestFolder folder_;
    const std::string card_ = folder_.Path("card");
    const std::string day_ = card_ + "/2026-03-07_logfile.csv";
    const std::string next_ = card_ + "/2026-03-08_logfile.csv";
    Fifo output_{folder_.Path("output")};
    Fifo error_{folder_.Path("error")};
    std::optional<Follower> follower_;
};

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

TEST_F(Following, HoldsNoFileOfTheCardOpen) {
    WriteText(day_, Result("2026-03-07 09:00.17"));
    Follower& follower = Follow();
    Append(day_, Result("2026-03-07 09:00.34"));
    EXPECT_EQ(Next(), Json("2026-03-07T09:00:34"));
    follower.AwaitSleep();
    EXPECT_THAT(follower.OpenFiles(), Each(testing::Not(HasSubstr(card_))));
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
