// Reading along on the console: steps, measurements and limits, whatever the pieces are.

#include "simulator/run/ConsoleWatch.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::ConsoleWatch;

std::string Status(const std::string& message) {
    return "TAVRELIN,2026-03-07 09:00.00,0.000,1,0.1.4.47\n," + message + "\n";
}
std::string Step(int number, const std::string& name) {
    return Status(name) + "main.cpp, 889: " + std::to_string(number) + ", 0\n" +
           "MeasurementCycle.cpp, 451, Elements: 2\n";
}

/// One measurement of two steps, and the next one's begin.
const std::string kStart = Status("Priming") + "MeasurementCycle.cpp, 150, success: 1\n";
const std::string kFirst = Step(1, "Dark");
const std::string kSecond = Step(2, "Check");
const std::string kResult = Status("Check");
const std::string kRun = kStart + kFirst + kSecond + kResult + kFirst + kSecond + kResult;

struct Watched {
    std::string shown;
    std::string limit;
    std::uint64_t steps = 0;
    std::uint64_t measurements = 0;

    bool operator==(const Watched&) const = default;
};

void PrintTo(const Watched& watched, std::ostream* out) {
    *out << watched.steps << " steps, " << watched.measurements << " measurements, "
         << watched.limit << ":\n"
         << watched.shown;
}

/// Watches a text that comes in pieces of a size, until a limit.
Watched Watch(const std::string& text, std::size_t piece, std::optional<std::uint64_t> steps = {},
              std::optional<std::uint64_t> measurements = {}) {
    ConsoleWatch console(steps, measurements);
    Watched watched;
    for (std::size_t at = 0; at < text.size() && watched.limit.empty(); at += piece) {
        const ConsoleWatch::Verdict verdict = console.Read(text.substr(at, piece));
        watched.shown += verdict.show;
        watched.limit = verdict.limit.value_or("");
    }
    if (watched.limit.empty()) {
        watched.shown += console.Release();
    }
    watched.steps = console.Steps();
    watched.measurements = console.Measurements();
    return watched;
}

class Pieces : public testing::TestWithParam<std::size_t> {};

TEST_P(Pieces, ShowEverythingWithoutALimit) {
    EXPECT_EQ(Watch(kRun, GetParam()), (Watched{kRun, "", 4, 2}));
}

TEST_P(Pieces, EndWithTheResultOfTheLastMeasurement) {
    EXPECT_EQ(Watch(kRun, GetParam(), {}, 1),
              (Watched{kStart + kFirst + kSecond + kResult, "measurements", 2, 1}));
    EXPECT_EQ(Watch(kRun + "more", GetParam(), {}, 2), (Watched{kRun, "measurements", 4, 2}));
}

TEST_P(Pieces, EndBeforeAStepBeyondTheLimit) {
    EXPECT_EQ(Watch(kRun, GetParam(), 1), (Watched{kStart + kFirst, "steps", 1, 0}));
    EXPECT_EQ(Watch(kRun, GetParam(), 2),
              (Watched{kStart + kFirst + kSecond + kResult, "steps", 2, 1}));
    EXPECT_EQ(Watch(kRun, GetParam(), 3),
              (Watched{kStart + kFirst + kSecond + kResult + kFirst, "steps", 3, 1}));
}

TEST_P(Pieces, ShowARunThatEndsBeforeItsLimit) {
    EXPECT_EQ(Watch(kRun, GetParam(), 9, 9), (Watched{kRun, "", 4, 2}));
    const std::string failed =
        kStart + kFirst + "Failed Index:  3\n" + Status("!!!Error: Hardware Failure!!!");
    EXPECT_EQ(Watch(failed, GetParam(), 1), (Watched{failed, "", 1, 0}));
}

TEST_P(Pieces, ShowWhatOnlyBeginsLikeAStatusLine) {
    const std::string text = "T\nTAVRELIN\nTAVRELIN\n,TAVRELIN,\n\nTAVREL";
    EXPECT_EQ(Watch(text, GetParam(), 1), (Watched{text, "", 0, 0}));
}

INSTANTIATE_TEST_SUITE_P(Of, Pieces, testing::Values(1, 2, 3, 7, 45, 46, 100, 100'000),
                         testing::PrintToStringParamName());

TEST(ConsoleWatch, TellsEachStepAsItBegins) {
    ConsoleWatch console({}, {});
    std::vector<std::uint64_t> steps;
    console.onStep = [&](std::uint64_t number) { steps.push_back(number); };
    console.Read(kRun);
    EXPECT_EQ(steps, (std::vector<std::uint64_t>{1, 2, 3, 4}));
}

TEST(ConsoleWatch, HoldsBackAStatusLineOnly) {
    ConsoleWatch console(5, {});
    EXPECT_EQ(console.Read("ordinary").show, "ordinary");
    EXPECT_EQ(console.Read("\nTAVRE").show, "\n");
    EXPECT_EQ(console.Read("LIN,now\n").show, "");
    EXPECT_EQ(console.Read(",Dark").show, "");
    EXPECT_EQ(console.Read("\n").show, "TAVRELIN,now\n,Dark\n");
}

TEST(ConsoleWatch, TakesLinesOfAnyLength) {
    ConsoleWatch console(5, 5);
    const std::string longLine = std::string(1'000'000, 'x') + "\n";
    EXPECT_EQ(console.Read(longLine).show, longLine);
    const std::string longStatus = "TAVRELIN," + longLine + "," + longLine;
    EXPECT_EQ(console.Read(longStatus).show, longStatus);
}

} // namespace
} // namespace tavrelin
