#include "log/CivilTime.h"

#include "tests/log/LogProgram.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using daylog::CivilSeconds;
using daylog::IsoText;
using testing::HasSubstr;

class SummaryOf : public testing::Test {
  protected:
    CommandResult Of(const std::string& text, const std::vector<std::string>& options = {}) {
        WriteText(day_, text);
        std::vector<std::string> arguments{"summary", day_};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunLog(arguments);
    }

    TestFolder folder_;
    const std::string day_ = folder_.Path("2026-03-07_logfile.csv");
};

TEST_F(SummaryOf, TwoDaysTellsEachAndBoth) {
    WriteText(folder_.Path("2026-03-08_logfile.csv"),
              "2026-03-08 12:0:1,   20000,Dark Count Measurement,,\n"
              "2026-03-08 12:00.00,,,0.1,3,20010,2.9e+06,2.3871e+06\n");
    WriteText(day_, "2026-03-07 12:00.00,,,0.1,1,20000,3e+06,2.3871e+06\n"
                    "2026-03-07 12:00.17,,,0.1,2,20000,3e+06,2.3871e+06\n"
                    "2026-03-07 12:00.34,,,0.1,3,20000,3e+06,2.3871e+06\n");
    const CommandResult run = RunLog({"summary", folder_.Path()});
    EXPECT_EQ(run.output,
              "2026-03-07: 3 measurements, 0 samples\n"
              "  cycle      median 17 s, longest 17 s, 0 gaps\n"
              "  chlorine   mean 2, min 1, max 3, standard deviation 1\n"
              "  dark       mean 20000, min 20000, max 20000\n"
              "  reference  mean 3e+06, min 3e+06, max 3e+06\n"
              "2026-03-08: 1 measurement, 1 sample\n"
              "  cycle      median 86366 s, longest 86366 s, 1 gap\n"
              "  chlorine   mean 3, min 3, max 3, standard deviation 0\n"
              "  dark       mean 20010, min 20010, max 20010\n"
              "  reference  mean 2.9e+06, min 2.9e+06, max 2.9e+06\n"
              "in all: 4 measurements, 1 sample\n"
              "  cycle      median 17 s, longest 86366 s, 1 gap\n"
              "  chlorine   mean 2.25, min 1, max 3, standard deviation 0.957427\n"
              "  dark       mean 20002.5, min 20000, max 20010, drift 10.002 counts a day\n"
              "  reference  mean 2.975e+06, min 2.9e+06, max 3e+06, drift -100020 counts a day\n"
              "gaps longer than 34 s\n"
              "  2026-03-07T12:00:34 to 2026-03-08T12:00:00, 86366 s\n"
              "lines: 5 read: 4 results, 1 sample, 0 torn, 0 unknown\n");
    EXPECT_EQ(run.status, 1);
}

TEST_F(SummaryOf, SoundDayHasStatus0) {
    const CommandResult run = Of("2026-03-07 12:00.00,,,0.1,1,20000,3e+06,2.3871e+06\n"
                                 "2026-03-07 12:00.17,,,0.1,1,20000,3e+06,2.3871e+06\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.error, "");
}

TEST_F(SummaryOf, FlaggedRecordsNamesThemAndKeepsThemOutOfTheFigures) {
    const CommandResult run = Of("2026-03-07 12:00.00,,,nan,nan,nan,3e+06,2.3871e+06\n"
                                 "2026-03-07 12:00.17,,,-inf,-inf,20000,3e+06,20000\n"
                                 "2026-03-07 12:00.34,,,-0.1,-171.482,20000,3e+06,4e+06\n"
                                 "2026-03-07 12:00.51,,,0,0,20000,1.67772e+07,20000\n"
                                 "2026-03-07 12:01.08,,,0.1,171,20000,3e+06,2e+06\n");
    EXPECT_THAT(run.output, HasSubstr("  chlorine   mean -0.160667, min -171.482, max 171, "));
    EXPECT_THAT(run.output, HasSubstr("  flagged    1 not a number, 1 infinite, 1 out of the "
                                      "detector's range, 1 negative\n"));
    EXPECT_THAT(run.output, HasSubstr("flagged records\n  " + day_ +
                                      ":1: 2026-03-07T12:00:00: not a number\n  " + day_ +
                                      ":2: 2026-03-07T12:00:17: infinite\n"));
    EXPECT_EQ(run.status, 1);
}

TEST_F(SummaryOf, BrokenLinesNamesThemAndCountsEachOnce) {
    const CommandResult run = Of("2026-03-07 12:0:0,   20000,Dark Cou2026-03-07 12:00.17,,,0.1,1,"
                                 "20000,3e+06,2.3871e+06\n"
                                 "nt Measurement,,\n"
                                 "\x01hello\n"
                                 "2026-03-07 12:0:");
    EXPECT_THAT(run.output, HasSubstr("in all: 1 measurement, 1 sample\n"));
    EXPECT_THAT(run.output, HasSubstr("lines: 4 read: 0 results, 0 samples, 3 torn, 1 unknown; 2 "
                                      "records put together from torn lines\n"));
    EXPECT_THAT(run.output, HasSubstr("  " + day_ + ":3: unknown: ?hello\n  " + day_ +
                                      ":4: torn: 2026-03-07 12:0:\n"));
    EXPECT_EQ(run.status, 1);
}

TEST_F(SummaryOf, ManyGapsShowsAThousandAndCountsTheRest) {
    std::string text;
    for (CivilSeconds group = 0; group < 1002; ++group) {
        for (const CivilSeconds second : {0, 1, 2}) {
            std::string time = IsoText(1772841600 + 30 * group + second);
            time[10] = ' ';
            time[16] = '.';
            text += time + ",,,0.1,1,20000,3e+06,2.3871e+06\n";
        }
    }
    const CommandResult run = Of(text);
    EXPECT_THAT(LinesWith(run.output, ", 28 s"), testing::SizeIs(1000));
    EXPECT_THAT(run.output, HasSubstr("  and 1 shorter ones\n"));
}

TEST_F(SummaryOf, ManyBrokenLinesShowsTheFirstAndCountsTheRest) {
    std::string text;
    for (int i = 0; i < 25; ++i) {
        text += "hello\n";
    }
    const CommandResult run = Of(text);
    EXPECT_THAT(run.output, HasSubstr("25 read: 0 results, 0 samples, 0 torn, 25 unknown\n"));
    EXPECT_THAT(LinesWith(run.output, ": unknown: hello"), testing::SizeIs(20));
    EXPECT_THAT(run.output, HasSubstr("  and 5 more\n"));
}

TEST_F(SummaryOf, ASpanTellsWhatIsOutside) {
    const CommandResult run = Of("2026-03-07 12:00.00,,,0.1,1,20000,3e+06,2.3871e+06\n"
                                 "2026-03-07 12:00.17,,,0.1,5,20000,3e+06,2.3871e+06\n",
                                 {"--to", "2026-03-07T12:00:10"});
    EXPECT_THAT(run.output, HasSubstr("in all: 1 measurement, 0 samples\n  chlorine   mean 1,"));
    EXPECT_THAT(run.output, HasSubstr("2 read: 2 results, 0 samples, 0 torn, 0 unknown; 1 record "
                                      "outside --from and --to\n"));
}

TEST_F(SummaryOf, TheHourThatComesTwiceSaysSoAndFindsNoGap) {
    std::string text;
    for (const char* time : {"02:58.00", "02:59.00", "02:00.00", "02:01.00"}) {
        text += std::string("2026-10-25 ") + time + ",,,0.1,1,20000,3e+06,2.3871e+06\n";
    }
    const CommandResult run = Of(text, {"--zone", "Europe/Berlin"});
    EXPECT_THAT(run.output, HasSubstr("median 60 s, longest 60 s, 0 gaps\n"));
    EXPECT_THAT(run.output, HasSubstr("clock\n  2026-10-25: an hour comes twice; the order of the "
                                      "records tells which is which\n"));
    EXPECT_EQ(run.status, 0);
}

TEST_F(SummaryOf, AGapOverTheClockChangeEndsWhereTheNextResultIs) {
    std::string text;
    for (const char* time : {"01:00.00", "01:01.00", "01:02.00", "05:00.00"}) {
        text += std::string("2026-03-29 ") + time + ",,,0.1,1,20000,3e+06,2.3871e+06\n";
    }
    EXPECT_THAT(Of(text, {"--zone", "Europe/Berlin"}).output,
                HasSubstr("  2026-03-29T01:02:00 to 2026-03-29T05:00:00, 10680 s\n"));
}

TEST_F(SummaryOf, AClockSetBackSaysWhere) {
    const CommandResult run = Of("2026-03-07 12:00.00,,,0.1,1,20000,3e+06,2.3871e+06\n"
                                 "2026-03-07 11:59.00,,,0.1,1,20000,3e+06,2.3871e+06\n");
    EXPECT_THAT(run.output, HasSubstr("clock\n  " + day_ + ":2: time goes back by 60 seconds\n"));
}

TEST_F(SummaryOf, AnEmptyFileCountsNothing) {
    const CommandResult run = Of("");
    EXPECT_EQ(run.output, "in all: 0 measurements, 0 samples\n"
                          "lines: 0 read: 0 results, 0 samples, 0 torn, 0 unknown\n");
    EXPECT_EQ(run.status, 0);
}

TEST_F(SummaryOf, AFolderInPlaceOfAFileOfTheDaySaysSo) {
    EXPECT_EQ(RunCommand({"mkdir", day_}).status, 0);
    const CommandResult run = RunLog({"summary", folder_.Path()});
    EXPECT_EQ(run.error, "tavrelin-log: " + day_ + ": Is a directory\n");
    EXPECT_EQ(run.status, 1);
}

} // namespace
} // namespace tavrelin
