#include "cycle/OpticalMonitor.h"

#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <optional>

namespace tavrelin {
namespace {

using sim::Milliseconds;
using sim::Scenario;
using sim::Texts;

/// Runs a step that samples, by itself, on the thread of the test.
void Sample(Instrument& instrument, std::uint32_t duration, const std::string& description) {
    std::vector<float> samples;
    StepRequest request;
    request.Duration = duration;
    request.Description = description;
    request.samples = &samples;
    request.externalAdc = instrument.cycle.ExternalAdc();
    EXPECT_TRUE(MonitorOptics(&request));
}

/// The log of a step that begins at this time of day; its only reading comes 250 ms later.
std::string LogOfAStepAt(const std::string& wallTime) {
    Instrument instrument({}, StartingAt(wallTime));
    Sample(instrument, 0, "Any Step");
    return instrument.board.FileOnCard(wallTime.substr(0, 10) + "_logfile.csv");
}

/// The log's text for these readings.
std::string LogOf(const std::vector<std::int32_t>& readings) {
    Scenario scenario;
    scenario.board.converterWords = WordsFor(readings);
    Instrument instrument(scenario);
    for (std::size_t reading = 0; reading < readings.size(); ++reading) {
        Sample(instrument, 0, "R");
    }
    return instrument.Log();
}

TEST(SampleLog, HasOneLineForAStepWithoutDuration) {
    Instrument instrument;
    Sample(instrument, 0, "Optional Mitigation");
    EXPECT_EQ(instrument.Log(), "2026-03-07 09:0:0, 3000000,Optional Mitigation,,\n");
}

TEST(SampleLog, HasALinePerReadingEachWithTheStepsName) {
    Instrument instrument;
    Sample(instrument, 1000, "Color Development (debubbling)");
    EXPECT_EQ(instrument.Log(), "2026-03-07 09:0:0, 3000000,Color Development (debubbling),,\n"
                                "2026-03-07 09:0:0, 3000000,Color Development (debubbling),,\n"
                                "2026-03-07 09:0:0, 3000000,Color Development (debubbling),,\n"
                                "2026-03-07 09:0:1, 3000000,Color Development (debubbling),,\n");
}

TEST(SampleLog, TakesTheNameAsItIs) {
    Instrument instrument;
    Sample(instrument, 0, "");
    Sample(instrument, 0, "Sample Flush & Delivery, \"twice\"");
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
    Sample(instrument, 0, "Just before"); // at 9.999 s
    Sample(instrument, 0, "Just after");
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
    Sample(instrument, 1000, "Mixing");
    EXPECT_EQ(instrument.board.FileOnCard("2026-12-31_logfile.csv"), "");
    EXPECT_EQ(instrument.board.FileOnCard("2027-01-01_logfile.csv"),
              "2026-12-31 23:59:59, 3000000,Mixing,,\n"
              "2026-12-31 23:59:59, 3000000,Mixing,,\n"
              "2027-01-01 00:0:0, 3000000,Mixing,,\n"
              "2027-01-01 00:0:0, 3000000,Mixing,,\n");
}

TEST(SampleLog, IsOpenedOnceForTheLinesOfEachStep) {
    Scenario scenario;
    scenario.board.card.mounted = true;
    Instrument instrument(scenario);
    Sample(instrument, 1000, "A");
    Sample(instrument, 0, "B");
    Texts deeds = Deeds(instrument.board);
    std::erase_if(deeds,
                  [](const std::string& deed) { return deed.find(" card/") == std::string::npos; });
    EXPECT_EQ(deeds, (Texts{"thread 1: open card/2026-03-07_logfile.csv ok",
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
    Sample(instrument, 0, "Mixing");
    EXPECT_EQ(instrument.Log(), "earlier line\n2026-03-07 09:0:0, 3000000,Mixing,,\n");
}

/// Sets the board's time zone while it lives.
class TimeZone {
  public:
    explicit TimeZone(const char* zone) {
        if (const char* before = std::getenv("TZ")) {
            before_ = before;
        }
        setenv("TZ", zone, 1);
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    ~TimeZone() {
        if (before_) {
            setenv("TZ", before_->c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }

  private:
    std::optional<std::string> before_;
};

TEST(SampleLog, IsKeptInLocalTime) {
    const TimeZone sixHoursEast("EAST-6");
    Instrument instrument({}, StartingAt("2026-02-28 20:07:30"));
    Sample(instrument, 0, "Mixing");
    EXPECT_EQ(instrument.board.FileOnCard("2026-03-01_logfile.csv"),
              "2026-03-01 02:7:30, 3000000,Mixing,,\n");
}

} // namespace
} // namespace tavrelin
