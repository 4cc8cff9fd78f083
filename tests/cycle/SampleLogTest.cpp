#include "base/Sleep.h"

#include "tests/cycle/Instrument.h"
#include "tests/support/Worker.h"

#include <ctime>

namespace tavrelin {
namespace {

using sim::Milliseconds;
using sim::Texts;

/// The log of a step that begins at this time of day; its only reading comes 250 ms later.
std::string LogOfAStepAt(const std::string& wallTime) {
    Instrument instrument({}, StartingAt(wallTime));
    instrument.Sample(0, "Any Step");
    return instrument.Log(wallTime.substr(0, 10));
}

/// The log's text for these readings.
std::string LogOf(const std::vector<std::int32_t>& readings) {
    Instrument instrument(Answering(readings));
    for (std::size_t reading = 0; reading < readings.size(); ++reading) {
        instrument.Sample(0, "R");
    }
    return instrument.Log();
}

TEST(SampleLog, HasALinePerReadingEachWithTheStepsName) {
    Instrument instrument;
    instrument.Sample(1000, "Color Development (debubbling)");
    EXPECT_EQ(instrument.Log(), "2026-03-07 09:0:0, 3000000,Color Development (debubbling),,\n"
                                "2026-03-07 09:0:0, 3000000,Color Development (debubbling),,\n"
                                "2026-03-07 09:0:0, 3000000,Color Development (debubbling),,\n"
                                "2026-03-07 09:0:1, 3000000,Color Development (debubbling),,\n");
}

TEST(SampleLog, TakesTheNameAsItIs) {
    Instrument instrument;
    instrument.Sample(0, "");
    instrument.Sample(0, "Sample Flush & Delivery, \"twice\"");
    EXPECT_EQ(instrument.Log(),
              "2026-03-07 09:0:0, 3000000,,,\n"
              "2026-03-07 09:0:0, 3000000,Sample Flush & Delivery, \"twice\",,\n");
}

TEST(SampleLog, PadsMonthDayAndHourButNeitherMinutesNorSeconds) {
    EXPECT_EQ(LogOfAStepAt("2021-03-07 09:05:03"), "2021-03-07 09:5:3, 3000000,Any Step,,\n");
    EXPECT_EQ(LogOfAStepAt("2021-03-07 00:00:00"), "2021-03-07 00:0:0, 3000000,Any Step,,\n");
    EXPECT_EQ(LogOfAStepAt("2021-10-09 10:09:10"), "2021-10-09 10:9:10, 3000000,Any Step,,\n");
    EXPECT_EQ(LogOfAStepAt("2031-12-31 23:59:58"), "2031-12-31 23:59:58, 3000000,Any Step,,\n");
}

TEST(SampleLog, TakesTheTimeAfterTheReading) {
    Instrument instrument({}, StartingAt("2026-03-07 09:00:09"));
    instrument.board.Elapse(Milliseconds(749));
    instrument.Sample(0, "Just before"); // at 9.999 s
    instrument.Sample(0, "Just after");
    EXPECT_EQ(instrument.Log(), "2026-03-07 09:0:9, 3000000,Just before,,\n"
                                "2026-03-07 09:0:10, 3000000,Just after,,\n");
}

TEST(SampleLog, PutsReadingsToTheRightOfEightCharacters) {
    EXPECT_EQ(LogOf({0, -1, 12345678, -1234567}), "2026-03-07 09:0:0,       0,R,,\n"
                                                  "2026-03-07 09:0:0,      -1,R,,\n"
                                                  "2026-03-07 09:0:0,12345678,R,,\n"
                                                  "2026-03-07 09:0:1,-1234567,R,,\n");
}

TEST(SampleLog, LetsLongReadingsPassTheirField) {
    EXPECT_EQ(LogOf({-12345678, -16777216}), "2026-03-07 09:0:0,-12345678,R,,\n"
                                             "2026-03-07 09:0:0,-16777216,R,,\n");
}

// The file is that of the day of the last reading.
TEST(SampleLog, BelongsToTheNewDayAfterMidnight) {
    Instrument instrument({}, StartingAt("2026-12-31 23:59:59"));
    instrument.board.Elapse(Milliseconds(400));
    instrument.Sample(1000, "Mixing");
    EXPECT_EQ(instrument.Log("2026-12-31"), "");
    EXPECT_EQ(instrument.Log("2027-01-01"), "2026-12-31 23:59:59, 3000000,Mixing,,\n"
                                            "2026-12-31 23:59:59, 3000000,Mixing,,\n"
                                            "2027-01-01 00:0:0, 3000000,Mixing,,\n"
                                            "2027-01-01 00:0:0, 3000000,Mixing,,\n");
}

// Board time stands still while somebody looks at the clock, up to a thousand times: from then on
// each look takes 20 us and more. Here the line is composed 80 us before midnight, and the log
// opened when it has struck.
TEST(SampleLog, BelongsToTheDayOfItsLastLineEvenWhenItIsOpenedAfterMidnight) {
    Instrument instrument({}, StartingAt("2026-12-31 23:59:59"));
    instrument.board.Elapse(Milliseconds(750) - sim::Microseconds(100));
    Worker sampler([&] { instrument.Sample(0); });
    SleepMilliseconds(250);
    for (int look = 0; look < 1000; ++look) {
        std::time(nullptr);
    }
    sampler.Join();
    EXPECT_EQ(instrument.Log("2026-12-31"), "2026-12-31 23:59:59, 3000000,Mixing,,\n");
    EXPECT_EQ(instrument.Log("2027-01-01"), "");
}

TEST(SampleLog, IsOpenedOnceForTheLinesOfEachStep) {
    Instrument instrument(Where(&sim::BoardSetup::card, {.mounted = true}));
    instrument.Sample(1000, "A");
    instrument.Sample(0, "B");
    EXPECT_EQ(Picked(instrument.board, {" card/"}),
              (Texts{"thread 1: open card/2026-03-07_logfile.csv ok",
                     "thread 1: write card/2026-03-07_logfile.csv "
                     "\"2026-03-07 09:0:0, 3000000,A,,\\n2026-03-07 09:0:0, 3000000,A,,\\n"
                     "2026-03-07 09:0:0, 3000000,A,,\\n2026-03-07 09:0:1, 3000000,A,,\\n\"",
                     "thread 1: close card/2026-03-07_logfile.csv ok",
                     "thread 1: open card/2026-03-07_logfile.csv ok",
                     "thread 1: write card/2026-03-07_logfile.csv "
                     "\"2026-03-07 09:0:1, 3000000,B,,\\n\"",
                     "thread 1: close card/2026-03-07_logfile.csv ok"}));
    EXPECT_EQ(instrument.board.Kernel().Held(), 1U) << "the converter's descriptor alone";
}

TEST(SampleLog, AppendsToWhatTheDayHasAlready) {
    Instrument instrument;
    instrument.board.WriteFileOnCard("2026-03-07_logfile.csv", "earlier line\n");
    instrument.Sample(0, "Mixing");
    EXPECT_EQ(instrument.Log(), "earlier line\n2026-03-07 09:0:0, 3000000,Mixing,,\n");
}

TEST(SampleLog, IsKeptInLocalTime) {
    const TimeZone sixHoursEast("EAST-6");
    Instrument instrument({}, StartingAt("2026-02-28 20:07:30"));
    instrument.Sample(0, "Mixing");
    EXPECT_EQ(instrument.Log("2026-03-01"), "2026-03-01 02:7:30, 3000000,Mixing,,\n");
}

} // namespace
} // namespace tavrelin
