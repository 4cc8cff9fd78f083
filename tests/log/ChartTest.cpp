// chart: what gnuplot is told, what becomes of its picture, and a picture of each kind by the real
// one.

#include "tests/log/LogProgram.h"
#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::string ResultAt(const std::string& time, const std::string& chlorine,
                     const std::string& dark = "20000") {
    return time + ",,,0.1," + chlorine + "," + dark + ",3e+06,2.3871e+06\n";
}

class ChartOf : public testing::Test {
  protected:
    CommandResult Chart(const std::string& log, const std::vector<std::string>& options = {},
                        const std::string& file = "chart.svg") {
        WriteText(day_, log);
        std::vector<std::string> arguments{"chart", "-o", pictures_.Path(file), day_};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunLog(arguments);
    }
    /// What gnuplot is told.
    std::string ScriptOf(const std::string& log, const std::vector<std::string>& options = {}) {
        const TestTools tools;
        tools.Install("gnuplot", "cat > " + folder_.Path("script") + "; echo picture");
        const CommandResult run = Chart(log, options);
        EXPECT_EQ(run.error, "");
        EXPECT_EQ(run.status, 0);
        return TextOf(folder_.Path("script"));
    }
    /// The rows of the first block of data of this name: that of chlorine.
    static std::string Block(const std::string& script, const std::string& name) {
        const std::string begin = "$" + name + " << EOD\n0 NaN\n";
        const std::size_t at = script.find(begin) + begin.size();
        return script.substr(at, script.find("EOD\n", at) - at);
    }

    TestFolder folder_;
    TestFolder pictures_;
    const std::string day_ = folder_.Path("2026-03-07_logfile.csv");
    const std::string nine_ = ResultAt("2026-03-07 09:00.00", "1");
};

TEST_F(ChartOf, AGapIsLeftOpen) {
    const std::string script = ScriptOf(
        nine_ + ResultAt("2026-03-07 09:00.20", "2") + ResultAt("2026-03-07 09:00.40", "3") +
        ResultAt("2026-03-07 09:01.20", "4") + ResultAt("2026-03-07 09:02.01", "5"));
    EXPECT_EQ(Block(script, "line"), "1772874000 1\n1772874020 2\n1772874040 3\n1772874080 4\n\n"
                                     "1772874121 5\n");
    EXPECT_THAT(script, HasSubstr("'5 results, 1 gap, 0 flagged'"));
}

TEST_F(ChartOf, FlaggedRecordsAreMarkedAndNoLineGoesThroughWhatIsNoFigure) {
    const std::string script = ScriptOf(
        ResultAt("2026-03-07 09:00.00", "1") + ResultAt("2026-03-07 09:00.20", "-0.1") +
        ResultAt("2026-03-07 09:00.40", "nan") + ResultAt("2026-03-07 09:01.00", "3") +
        ResultAt("2026-03-07 09:01.20", "1.5", "2e+07") + ResultAt("2026-03-07 09:01.40", "2"));
    EXPECT_EQ(Block(script, "line"), "1772874000 1\n1772874020 -0.100000001\n\n1772874060 3\n\n"
                                     "1772874100 2\n");
    const auto flagged = LinesOf(Block(script, "flagged"));
    ASSERT_EQ(flagged.size(), 3U);
    EXPECT_EQ(flagged[0], "1772874020 -0.100000001");
    EXPECT_THAT(flagged[1], StartsWith("1772874040 -0.28")); // at the lower edge
    EXPECT_EQ(flagged[2], "1772874080 1.5");
    EXPECT_THAT(script, HasSubstr("title 'flagged record'"));
    EXPECT_THAT(script, HasSubstr("'6 results, 0 gaps, 3 flagged'"));
}

TEST_F(ChartOf, AFlaggedPeakDoesNotHideTheRest) {
    const std::string script = ScriptOf(nine_ + ResultAt("2026-03-07 09:00.20", "2") +
                                        ResultAt("2026-03-07 09:00.40", "9e9", "2e+07"));
    EXPECT_THAT(script, HasSubstr("set yrange [0.94:2.06]"));
    EXPECT_THAT(Block(script, "flagged"), StartsWith("1772874040 2.05"));
}

TEST_F(ChartOf, AnHourThatComesTwiceDrawsNoLineBack) {
    EXPECT_EQ(
        Block(ScriptOf(ResultAt("2026-10-25 02:59.50", "1") + ResultAt("2026-10-25 02:00.10", "2"),
                       {"--zone", "Europe/Berlin"}),
              "line"),
        "1792897190 1\n\n1792893610 2\n");
}

TEST_F(ChartOf, FromToScaleAndUnitAreHeeded) {
    const std::string script = ScriptOf(nine_ + ResultAt("2026-03-07 10:00.00", "1500") +
                                            ResultAt("2026-03-07 11:00.00", "3"),
                                        {"--from", "2026-03-07T10:00", "--to", "2026-03-07T11:00",
                                         "--scale", "0.001", "--unit", "mg/L"});
    EXPECT_EQ(Block(script, "line"), "1772877600 1.5\n");
    EXPECT_THAT(script, HasSubstr("'Chlorine (mg/L)'"));
    EXPECT_THAT(ScriptOf(nine_), HasSubstr("'Chlorine (as calibrated)'"));
}

TEST_F(ChartOf, TextsOfTheUserStandAsTheyAre) {
    const std::string script =
        ScriptOf(nine_, {"--title", "Works' {east}_1 \\n \"A\" `id` \xC2\xB5", "--unit", "'; !id"});
    EXPECT_THAT(script,
                HasSubstr("set label 1 'Works'' {east}_1 \\n \"A\" `id` \xC2\xB5' at screen"));
    EXPECT_THAT(script, HasSubstr("'Chlorine (''; !id)'"));
}

TEST_F(ChartOf, TextsOfSeveralLinesAreRefused) {
    for (const std::string text : {"a\nb", "\x1B", "\xFF"}) {
        for (const std::string option : {"--title", "--unit"}) {
            const CommandResult run = Chart(nine_, {option, text});
            EXPECT_EQ(run.error, "tavrelin-log: --title and --unit take one line of UTF-8 text\n");
            EXPECT_EQ(run.status, 2);
        }
    }
}

struct Axis {
    std::string last; ///< with the first at 2026-03-07 09:00:00
    std::string format;
};

TEST_F(ChartOf, TheTimeAxisIsSpelledAsItsSpanNeeds) {
    const Axis axes[]{
        {"2026-03-07 09:00.34", "%H:%M:%S"},   {"2026-03-07 09:45.00", "%H:%M"},
        {"2026-03-08 09:00.00", "%H:%M"},      {"2026-03-09 09:00.00", "%H:%M\\n%d %b"},
        {"2026-05-01 09:00.00", "%d %b\\n%Y"}, {"2027-03-06 09:00.00", "%b\\n%Y"}};
    for (const Axis& axis : axes) {
        EXPECT_THAT(ScriptOf(nine_ + ResultAt(axis.last, "1")),
                    HasSubstr("set format x \"" + axis.format + "\"\n"))
            << axis.last;
    }
}

TEST_F(ChartOf, NoRecordIsToldAndLeavesNoPicture) {
    const CommandResult run = Chart("2026-03-07 09:0:16,   20000,Dark,,\n");
    EXPECT_EQ(run.error, "tavrelin-log: no result record to draw\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(FilesIn(pictures_.Path()), IsEmpty());
}

TEST_F(ChartOf, AMissingGnuplotIsToldInOneLine) {
    const TestFolder empty;
    const Environment path("PATH", empty.Path());
    const CommandResult run = Chart(nine_);
    EXPECT_EQ(run.error, "tavrelin-log: gnuplot is not installed; it draws the charts (Debian: "
                         "gnuplot-nox)\n");
    EXPECT_EQ(run.status, 1);
}

TEST_F(ChartOf, AGnuplotThatFailsLeavesThePictureThatWasThere) {
    const TestTools tools;
    WriteText(pictures_.Path("chart.svg"), "old");
    tools.Install("gnuplot", "echo half; echo; echo line 7: no such thing >&2; exit 1");
    const CommandResult run = Chart(nine_);
    EXPECT_EQ(run.error, "tavrelin-log: " + pictures_.Path("chart.svg") +
                             ": gnuplot failed: line 7: no such thing\n");
    EXPECT_EQ(run.status, 1);
    tools.Install("gnuplot", "kill -9 $$");
    EXPECT_EQ(Chart(nine_).status, 1);
    tools.Install("gnuplot", ":");
    EXPECT_EQ(Chart(nine_).status, 1);
    EXPECT_THAT(FilesIn(pictures_.Path()), ElementsAre(testing::Pair("chart.svg", "old")));
}

TEST_F(ChartOf, APictureThatCannotBeWrittenLeavesNothingBehind) {
    std::filesystem::create_directory(pictures_.Path("chart.svg"));
    const CommandResult run = Chart(nine_);
    EXPECT_EQ(run.error, "tavrelin-log: " + pictures_.Path("chart.svg") + ": Is a directory\n");
    EXPECT_EQ(run.status, 1);
    std::filesystem::remove(pictures_.Path("chart.svg"));
    EXPECT_THAT(FilesIn(pictures_.Path()), IsEmpty());
    EXPECT_EQ(Chart(nine_, {}, "missing/chart.svg").error,
              "tavrelin-log: " + pictures_.Path("missing/chart.svg") +
                  ": No such file or directory\n");
}

TEST_F(ChartOf, OtherKindsOfPicturesAreRefused) {
    const CommandResult run = Chart(nine_, {}, "chart.jpeg");
    EXPECT_EQ(run.error,
              "tavrelin-log: --output takes a file that ends in .svg, .png or .pdf, not '" +
                  pictures_.Path("chart.jpeg") + "'\n");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(RunLog({"chart", day_}).status, 2);
}

TEST_F(ChartOf, GnuplotDrawsEachKind) {
    const std::string log = nine_ + ResultAt("2026-03-07 09:00.20", "nan") +
                            ResultAt("2026-03-07 09:00.40", "3") +
                            ResultAt("2026-03-07 12:00.40", "4");
    const std::vector<std::string> title{"--title", "Works' {east}_1 <&> \\n \"A\""};
    for (const std::string file : {"chart.svg", "chart.png", "chart.pdf"}) {
        const CommandResult run = Chart(log, title, file);
        EXPECT_EQ(run.error, "");
        EXPECT_EQ(run.status, 0);
    }
    const auto pictures = FilesIn(pictures_.Path());
    EXPECT_EQ(pictures.size(), 3U);
    EXPECT_THAT(pictures.at("chart.png"), StartsWith("\x89PNG"));
    EXPECT_THAT(pictures.at("chart.pdf"), StartsWith("%PDF"));
    const std::string& svg = pictures.at("chart.svg");
    EXPECT_THAT(svg, HasSubstr("Works' {east}_1 &lt;&amp;> \\n \"A\""));
    EXPECT_THAT(svg, HasSubstr("Chlorine (as calibrated)"));
    EXPECT_THAT(svg, HasSubstr("Dark (counts)"));
    EXPECT_THAT(svg, HasSubstr("Reference (counts)"));
    EXPECT_THAT(svg, HasSubstr("local time"));
    EXPECT_THAT(svg, HasSubstr("10:00"));
    EXPECT_THAT(svg, testing::EndsWith("</svg>\n\n"));
}

TEST_F(ChartOf, OneRecordIsDrawnToo) {
    for (const std::string chlorine : {"0", "-1", "1e300", "nan", "-inf"}) {
        EXPECT_EQ(Chart(ResultAt("2026-03-07 09:00.00", chlorine, "nan"), {}, "chart.png").status,
                  0)
            << chlorine;
    }
}

TEST_F(ChartOf, OfManyRecordsThePeakAndTheDipAreDrawn) {
    std::string log;
    for (int second = 0; second < 36'000; ++second) {
        const auto two = [](int number) {
            return std::string(number < 10 ? "0" : "") + std::to_string(number);
        };
        log += ResultAt("2026-03-07 " + two(second / 3600) + ":" + two(second / 60 % 60) + "." +
                            two(second % 60),
                        second == 333    ? "9"
                        : second == 4444 ? "0.5"
                                         : "1");
    }
    const auto rows = LinesOf(Block(ScriptOf(log), "line"));
    EXPECT_LT(rows.size(), 1600U);
    EXPECT_THAT(rows, testing::IsSupersetOf({"1772841933 9", "1772846044 0.5"}));
}

} // namespace
} // namespace tavrelin
