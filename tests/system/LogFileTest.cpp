#include "tests/system/LogFile.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using Lines = std::vector<std::string>;

const std::string kSample = "2026-03-07 09:0:3,   20000,Dark Count Measurement,,\n";
const std::string kResult = "2026-03-07 09:00.17,,,0.25,-inf,nan,3e+06,-1.69578e+06\n";

TEST(LogFile, TakesWholeRecordsForWhole) {
    EXPECT_EQ(TornLines(kSample + kResult + kSample), Lines{});
    EXPECT_EQ(TornLines("2026-03-07 23:59:59,-16777216,Sample Flush & Delivery,,\n"), Lines{});
}

// Whatever is cut from either end of a record shows.
TEST(LogFile, NoticesEveryTornRecord) {
    for (const std::string& record : {kSample, kResult}) {
        for (std::size_t length = 1; length < record.size(); ++length) {
            EXPECT_NE(TornLines(record.substr(0, length)), Lines{}) << record.substr(0, length);
            EXPECT_NE(TornLines(record.substr(0, length) + kSample), Lines{});
        }
        for (std::size_t begin = 1; begin + 1 < record.size(); ++begin) {
            EXPECT_NE(TornLines(record.substr(begin)), Lines{}) << record.substr(begin);
        }
    }
}

TEST(LogFile, TellsSamplesFromResults) {
    EXPECT_EQ(ResultLines(kSample + kResult).size(), 1U);
    EXPECT_EQ(ReadingsIn(kSample + kResult), (std::vector<long>{20000}));
    EXPECT_EQ(SamplesOf("Dark Count Measurement", kSample + kResult + kSample), 2U);
    EXPECT_EQ(ResultsIn(kResult)[0].absorbance, 0.25);
    EXPECT_EQ(ResultsIn(kResult)[0].reactedSample, -1695780.0);
}

} // namespace
} // namespace tavrelin
