#include "tests/log/LogProgram.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

class Listing : public testing::Test {
  protected:
    Listing() {
        WriteText(day_, "2026-03-07 23:59:58,   20000,Dark Count Measurement,,\n"
                        "2026-03-07 23:59:59, 2387098,Flush, twice (\"slow\"),,\n"
                        "2026-03-07 23:59.59,,,0.1,171.482,20000,3e+06,2.3871e+06\n");
        WriteText(next_, "2026-03-08 00:0:5,   20001,Dark Count Measurement,,\n"
                         "2026-03-08 00:00.16,,,nan,inf,-2,1e-05,0\n");
    }

    TestFolder folder_;
    const std::string day_ = folder_.Path("2026-03-07_logfile.csv");
    const std::string next_ = folder_.Path("2026-03-08_logfile.csv");
};

TEST_F(Listing, OfResultsIsCsvWithAHeader) {
    const CommandResult run = RunLog({"results", folder_.Path()});
    EXPECT_EQ(run.output, "time,absorbance,chlorine,dark,reference,sample\n"
                          "2026-03-07T23:59:59,0.1,171.482,20000,3e+06,2.3871e+06\n"
                          "2026-03-08T00:00:16,nan,inf,-2,1e-05,0\n");
    EXPECT_EQ(run.error, "");
    EXPECT_EQ(run.status, 0);
}

TEST_F(Listing, OfResultsInJsonHasAnObjectALine) {
    EXPECT_EQ(RunLog({"results", "--json", folder_.Path()}).output,
              R"({"time":"2026-03-07T23:59:59","absorbance":0.1,"chlorine":171.482,"dark":20000,)"
              R"("reference":3e+06,"sample":2.3871e+06})"
              "\n"
              R"({"time":"2026-03-08T00:00:16","absorbance":null,"chlorine":null,"dark":-2,)"
              R"("reference":1e-05,"sample":0})"
              "\n");
}

TEST_F(Listing, OfSamplesQuotesWhatCsvWouldReadOtherwise) {
    EXPECT_EQ(RunLog({"samples", day_}).output,
              "time,reading,step\n"
              "2026-03-07T23:59:58,20000,Dark Count Measurement\n"
              "2026-03-07T23:59:59,2387098,\"Flush, twice (\"\"slow\"\")\"\n");
    EXPECT_THAT(RunLog({"samples", "--json", day_}).output,
                HasSubstr(R"json("reading":2387098,"step":"Flush, twice (\"slow\")"})json"));
}

TEST_F(Listing, OfSamplesMayBeThatOfAStepOrAMeasurement) {
    EXPECT_THAT(LinesOf(RunLog({"samples", "--step", "Dark", folder_.Path()}).output),
                ElementsAre("time,reading,step", HasSubstr("20000,Dark"), HasSubstr("20001,Dark")));
    EXPECT_THAT(
        LinesOf(RunLog({"samples", "--measurement", "2026-03-08T00:00:16", folder_.Path()}).output),
        ElementsAre("time,reading,step", HasSubstr("20001,Dark")));
}

TEST_F(Listing, TakesFromFromAndLeavesTo) {
    EXPECT_THAT(RunLog({"results", "--from", "2026-03-08", folder_.Path()}).output,
                HasSubstr("\n2026-03-08T00:00:16"));
    EXPECT_THAT(LinesOf(RunLog({"results", "--from", "2026-03-07T23:59:59", "--to",
                                "2026-03-08T00:00:16", folder_.Path()})
                            .output),
                ElementsAre(testing::_, HasSubstr("2026-03-07T23:59:59")));
}

TEST_F(Listing, ShowsOffsetsInANamedZone) {
    EXPECT_THAT(RunLog({"results", "--zone", "Europe/Berlin", day_}).output,
                HasSubstr("2026-03-07T23:59:59+01:00,"));
}

TEST_F(Listing, IsAlignedOnATerminal) {
    const std::string command = InBuild("bin/tavrelin-log") + " results " + folder_.Path();
    std::string shown = RunCommand({"script", "-qec", command, "/dev/null"}).output;
    std::erase(shown, '\r');
    EXPECT_EQ(shown, "time                 absorbance  chlorine   dark  reference      sample\n"
                     "2026-03-07T23:59:59         0.1   171.482  20000      3e+06  2.3871e+06\n"
                     "2026-03-08T00:00:16         nan       inf     -2      1e-05           0\n");
}

TEST_F(Listing, TellsOnATerminalHowFarItHasComeAfterASecond) {
    const std::string pipe = folder_.Path("pipe");
    const std::string command = "mkfifo " + pipe + "; (cat " + day_ + "; sleep 1.1; cat " + day_ +
                                ") >" + pipe + " & " + InBuild("bin/tavrelin-log") + " results " +
                                pipe + " >/dev/null";
    EXPECT_EQ(RunCommand({"script", "-qec", command, "/dev/null"}).output,
              "\r100 %, 0 MB, 0 MB/s\033[K\r\033[K");
}

TEST_F(Listing, TellsThatLinesWereNoRecords) {
    WriteText(day_, TextOf(day_) + "hello\n2026-03-07 23:59:59, 23");
    const CommandResult run = RunLog({"results", day_});
    EXPECT_THAT(LinesOf(run.output), SizeIs(2));
    EXPECT_EQ(run.error, "tavrelin-log: 2 lines are torn or unknown: summary names them\n");
    EXPECT_EQ(run.status, 1);
}

TEST_F(Listing, GoesOnAfterAFileThatCannotBeRead) {
    const std::string missing = folder_.Path("missing");
    const CommandResult run = RunLog({"results", missing, day_});
    EXPECT_THAT(LinesOf(run.output), SizeIs(2));
    EXPECT_EQ(run.error, "tavrelin-log: " + missing + ": No such file or directory\n");
    EXPECT_EQ(run.status, 1);
}

TEST_F(Listing, OfAFolderWithoutDaysSaysSo) {
    const TestFolder empty;
    const CommandResult run = RunLog({"results", empty.Path()});
    EXPECT_EQ(run.error,
              "tavrelin-log: " + empty.Path() + ": no file such as 2026-03-07_logfile.csv in it\n");
    EXPECT_EQ(run.status, 1);
}

TEST_F(Listing, SaysThatItCouldNotBeWritten) {
    const CommandResult run =
        RunCommand({"sh", "-c", InBuild("bin/tavrelin-log") + " results " + day_ + " >/dev/full"});
    EXPECT_EQ(run.error, "tavrelin-log: standard output: No space left on device\n");
    EXPECT_EQ(run.status, 1);
}

TEST(LogUsage, IsHeldInOneLine) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{},
                                               {"nonsense"},
                                               {"results"},
                                               {"results", "--from", "yesterday", "x"},
                                               {"results", "--zone", "Nowhere", "x"},
                                               {"summary", "--json", "x"}}) {
        const CommandResult run = RunLog(arguments);
        EXPECT_EQ(run.status, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(LinesOf(run.error), ElementsAre(HasSubstr("see tavrelin-log --help")));
    }
}

TEST(LogHelp, IsThereForEveryCommand) {
    const CommandResult help = RunLog({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.error, "");
    std::string transcript = "$ tavrelin-log --help\n" + help.output;
    const std::string_view all = help.output;
    const std::string title = "Subcommands:\n";
    const std::size_t begin = all.find(title) + title.size();
    for (const std::string& line : LinesOf(all.substr(begin, all.find("\n\n", begin) - begin))) {
        const std::string command = line.substr(2, line.find(' ', 2) - 2);
        const CommandResult more = RunLog({command, "--help"});
        EXPECT_EQ(more.status, 0) << command;
        transcript += "\n$ tavrelin-log " + command + " --help\n" + more.output;
    }
    EXPECT_TRUE(MatchesGoldenFile(transcript, "log/golden/help.txt"));
}

} // namespace
} // namespace tavrelin
