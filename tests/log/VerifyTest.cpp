// verify: grab samples beside the nearest results, and whether the analyser tells the same.

#include "tests/log/LogProgram.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using testing::ElementsAre;

const std::string kHeader = "time,grab,result_time,result,difference,percent,limit,verdict\n";

std::string ResultAt(const std::string& time, const std::string& chlorine) {
    return "2026-03-07 " + time + ",,,0.1," + chlorine + ",20000,3e+06,2.3871e+06\n";
}

class VerifyWith : public testing::Test {
  protected:
    CommandResult Verify(const std::string& grabs, const std::string& log,
                         const std::vector<std::string>& options = {}) {
        WriteText(grab_, grabs);
        WriteText(day_, log);
        std::vector<std::string> arguments{"verify", "--grab", grab_, day_};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunLog(arguments);
    }
    std::string Verdict(const std::string& value, const std::string& result,
                        const std::vector<std::string>& options = {}) {
        const CommandResult run =
            Verify("2026-03-07T09:00," + value + "\n", ResultAt("09:00.00", result), options);
        EXPECT_EQ(run.error, "");
        const std::string verdict = Split(LinesOf(run.output).back(), ',').back();
        EXPECT_EQ(run.status, verdict == "within" ? 0 : 1);
        return verdict;
    }

    TestFolder folder_;
    const std::string grab_ = folder_.Path("GRAB.csv");
    const std::string day_ = folder_.Path("2026-03-07_logfile.csv");
};

TEST_F(VerifyWith, EachGrabSampleTellsTheNearestResult) {
    const CommandResult run = Verify(
        "taken,mg/L,by\n2026-03-07T10:00,2,somebody\n2026-03-07T09:00:20,1,\n",
        ResultAt("09:00.00", "0.5") + ResultAt("09:00.17", "1.1") + ResultAt("09:00.34", "3") +
            ResultAt("09:59.43", "2.5") + ResultAt("10:00.17", "2.6"));
    EXPECT_EQ(run.output, kHeader +
                              "2026-03-07T09:00:20,1,2026-03-07T09:00:17,1.1,0.1,10,0.15,within\n"
                              "2026-03-07T10:00:00,2,2026-03-07T09:59:43,2.5,0.5,25,0.3,out\n");
    EXPECT_EQ(run.error, "");
    EXPECT_EQ(run.status, 1);
}

TEST_F(VerifyWith, TheLimitIs15PercentOrATenthWhicheverIsGreaterAndOnItIsWithin) {
    EXPECT_EQ(Verdict("2", "2.3"), "within");
    EXPECT_EQ(Verdict("2", "1.7"), "within");
    EXPECT_EQ(Verdict("2", "2.301"), "out");
    EXPECT_EQ(Verdict("2", "1.699"), "out");
    EXPECT_EQ(Verdict("0.3", "0.4"), "within");
    EXPECT_EQ(Verdict("0.3", "0.2"), "within");
    EXPECT_EQ(Verdict("0.3", "0.401"), "out");
    EXPECT_EQ(Verdict("0.6", "0.7"), "within");
    EXPECT_EQ(Verdict("1", "1.15"), "within");
}

TEST_F(VerifyWith, AValueOf0HasNoPercent) {
    EXPECT_EQ(Verdict("0", "0.1"), "within");
    EXPECT_EQ(Verdict("0", "-0.101"), "out");
    const CommandResult run =
        Verify("2026-03-07T09:00,0\n", ResultAt("09:00.00", "0.05"), {"--json"});
    EXPECT_EQ(
        run.output,
        "{\"time\":\"2026-03-07T09:00:00\",\"grab\":0,\"result_time\":\"2026-03-07T09:00:00\","
        "\"result\":0.05,\"difference\":0.05,\"percent\":null,\"limit\":0.1,"
        "\"verdict\":\"within\"}\n");
}

TEST_F(VerifyWith, TheToleranceCanBeChanged) {
    EXPECT_EQ(Verdict("2", "2.3", {"--tolerance", "10"}), "out");
    EXPECT_EQ(Verdict("2", "2.2", {"--tolerance", "10"}), "within");
    EXPECT_EQ(Verdict("2", "2.5", {"--absolute", "0.5"}), "within");
    EXPECT_EQ(Verdict("2", "2.1", {"--tolerance", "0", "--absolute", "0.05"}), "out");
}

TEST_F(VerifyWith, ScaleMakesTheGrabSamplesUnitOfTheLogs) {
    EXPECT_EQ(Verdict("0.171", "171.482"), "out");
    EXPECT_EQ(Verdict("0.171", "171.482", {"--scale", "0.001"}), "within");
}

TEST_F(VerifyWith, AResultIsNearWithin15MinutesOrAsAsked) {
    const std::string grab = "2026-03-07T09:00,1\n";
    EXPECT_EQ(Verify(grab, ResultAt("09:15.00", "1")).status, 0);
    const CommandResult run = Verify(grab, ResultAt("09:15.01", "1"));
    EXPECT_EQ(run.output, kHeader + "2026-03-07T09:00:00,1,,,,,0.15,no result\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(Verify(grab, ResultAt("09:20.00", "1"), {"--within", "20"}).status, 0);
    EXPECT_EQ(Verify(grab, ResultAt("09:01.00", "1"), {"--within", "0.5"}).status, 1);
}

TEST_F(VerifyWith, AResultThatIsNoNumberIsPassedOver) {
    const CommandResult run =
        Verify("2026-03-07T09:00,1\n", ResultAt("09:00.00", "nan") + ResultAt("09:00.01", "inf") +
                                           ResultAt("09:00.17", "1"));
    EXPECT_EQ(run.output,
              kHeader + "2026-03-07T09:00:00,1,2026-03-07T09:00:17,1,0,0,0.15,within\n");
}

TEST_F(VerifyWith, TimesAreSpelledAsIsoOrAsInTheLog) {
    const CommandResult run = Verify("\xEF\xBB\xBF\"2026-03-07T09:00:01\",\"1\"\r\n"
                                     "2026-03-07 09:00, 1\r\n"
                                     "2026-03-07 09:00.17,1\r\n"
                                     "\r\n"
                                     "2026-03-07 09:0:5,1",
                                     ResultAt("09:00.00", "1"));
    EXPECT_EQ(run.error, "");
    EXPECT_EQ(run.status, 0);
    std::vector<std::string> times;
    for (const std::string& line : LinesOf(run.output)) {
        times.push_back(Split(line, ',').front());
    }
    EXPECT_THAT(times, ElementsAre("time", "2026-03-07T09:00:00", "2026-03-07T09:00:01",
                                   "2026-03-07T09:00:05", "2026-03-07T09:00:17"));
}

TEST_F(VerifyWith, ALineThatIsNoGrabSampleIsNamed) {
    const CommandResult run = Verify("time,value\n2026-03-07T09:00,1\nnoon,1\n2026-03-07T09:00,-1\n"
                                     "2026-03-07T09:00,1,5\n2026-02-30T09:00,1\n"
                                     "2026-03-07T09:00,much\x01\n2026-03-07T09:00,nan\n"
                                     "2026-03-07T09:00,\"0,9\"\n",
                                     ResultAt("09:00.00", "1"));
    const std::string what = ": not a time and a value, such as 2026-03-07T09:00,0.85: ";
    const auto line = [&](const std::string& number, const std::string& text) {
        return "tavrelin-log: " + grab_ + ":" + number + what + text;
    };
    EXPECT_THAT(LinesOf(run.error),
                ElementsAre(line("3", "noon,1"), line("4", "2026-03-07T09:00,-1"),
                            line("6", "2026-02-30T09:00,1"), line("7", "2026-03-07T09:00,much?"),
                            line("8", "2026-03-07T09:00,nan"),
                            line("9", "2026-03-07T09:00,\"0,9\"")));
    EXPECT_EQ(run.status, 1);
}

TEST_F(VerifyWith, ALineOfTheLogThatIsNoRecordIsTold) {
    const CommandResult run = Verify("2026-03-07T09:00,1\n", ResultAt("09:00.00", "1") + "hello\n");
    EXPECT_EQ(run.error, "tavrelin-log: 1 line is torn or unknown: summary names them\n");
    EXPECT_EQ(run.status, 1);
}

TEST_F(VerifyWith, AFileOfRubbishIsToldInFewLines) {
    std::string rubbish;
    for (int i = 0; i < 100; ++i) {
        rubbish += "1\n";
    }
    const CommandResult run = Verify(rubbish, ResultAt("09:00.00", "1"));
    const auto lines = LinesOf(run.error);
    ASSERT_EQ(lines.size(), 22U);
    EXPECT_EQ(lines[20], "tavrelin-log: " + grab_ + ": and 80 more such lines");
    EXPECT_EQ(lines[21], "tavrelin-log: " + grab_ + ": no grab sample in it");
    EXPECT_EQ(run.status, 1);
}

TEST_F(VerifyWith, AMissingFileIsNamedAndGrabIsNeeded) {
    WriteText(day_, ResultAt("09:00.00", "1"));
    EXPECT_THAT(RunLog({"verify", "--grab", folder_.Path("none"), day_}).error,
                testing::StartsWith("tavrelin-log: " + folder_.Path("none") +
                                    ": No such file or directory\n"));
    EXPECT_EQ(RunLog({"verify", day_}).status, 2);
    EXPECT_EQ(RunLog({"verify", "--grab", grab_, "--within", "nan", day_}).error,
              "tavrelin-log: --within: takes a number from 0 to 1e+06; see tavrelin-log --help\n");
}

} // namespace
} // namespace tavrelin
