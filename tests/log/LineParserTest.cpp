#include "log/LineParser.h"

#include "base/NumberText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace tavrelin::daylog {
namespace {

using testing::ElementsAre;

const std::string kSample = "2026-03-07 09:0:16, 2387098,Color Development (debubbling),,";
const std::string kResult = "2026-03-07 09:00.17,,,0.1,171.482,20000,3e+06,2.3871e+06";
const std::string kReadSample = "sample 2026-03-07T09:00:16 2387098 Color Development (debubbling)";
const std::string kReadResult = "result 2026-03-07T09:00:17 0.1 171.482 20000 3e+06 2.3871e+06";

/// "LINE: what", with "recovered" where it was put together.
std::string Told(const Entry& entry) {
    std::string text = std::to_string(entry.line) + ": " + (entry.recovered ? "recovered " : "");
    switch (entry.kind) {
    case Entry::Kind::Result: {
        const Figures& f = entry.figures;
        text += "result " + IsoText(entry.time);
        for (const double figure : {f.absorbance, f.chlorine, f.dark, f.reference, f.sample}) {
            text += " " + GeneralText(figure);
        }
        return text;
    }
    case Entry::Kind::Sample:
        return text + "sample " + IsoText(entry.time) + " " + std::to_string(entry.reading) + " " +
               std::string(entry.step);
    case Entry::Kind::Torn:
        return text + "torn " + std::string(entry.text);
    case Entry::Kind::Unknown:
        return text + "unknown " + std::string(entry.text);
    }
    return text;
}

std::vector<std::string> Read(const std::vector<std::string>& pieces) {
    std::vector<std::string> told;
    LineParser parser([&](const Entry& entry) { told.push_back(Told(entry)); });
    for (const std::string& piece : pieces) {
        parser.Feed(piece);
    }
    parser.Finish();
    return told;
}

std::vector<std::string> Read(const std::string& text) {
    return Read(std::vector<std::string>{text});
}

TEST(LineOfTheLog, IsASampleOrAResult) {
    EXPECT_THAT(Read(kSample + "\n" + kResult + "\n"),
                ElementsAre("1: " + kReadSample, "2: " + kReadResult));
}

TEST(SampleLine, HasMinutesAndSecondsWithoutPadding) {
    EXPECT_THAT(Read("2026-03-07 09:5:3,      -3,Sanity Check,,\n"),
                ElementsAre("1: sample 2026-03-07T09:05:03 -3 Sanity Check"));
    EXPECT_THAT(Read("2026-03-07 09:59:60,16777214,Sanity Check,,\n"),
                ElementsAre("1: sample 2026-03-07T10:00:00 16777214 Sanity Check"));
}

TEST(SampleLine, MayHoldCommasAndParenthesesInItsDescription) {
    EXPECT_THAT(Read("2026-03-07 09:0:16,      20,Flush, (then, wait),,,\n"),
                ElementsAre("1: sample 2026-03-07T09:00:16 20 Flush, (then, wait),"));
}

TEST(ResultLine, MayHoldFiguresThatAreNoNumbers) {
    EXPECT_THAT(Read("2026-03-07 09:00.17,,,nan,-inf,inf,0,-1.5e-05\n"),
                ElementsAre("1: result 2026-03-07T09:00:17 nan -inf inf 0 -1.5e-05"));
}

TEST(Line, ThatIsNoRecordIsUnknown) {
    for (const std::string line : {"", "hello", "\xFF\x01", "2026/03/07 09:00.17,,,1,2,3,4,5"}) {
        EXPECT_THAT(Read(line + "\n"), ElementsAre("1: unknown " + line));
    }
}

TEST(Line, ThatBeginsAsARecordAndIsNoneIsTorn) {
    for (const std::string line :
         {"2026-03-07 09:00.17,,,1,2,3,4", "2026-03-07 09:00.17,,,1,2,3,4,5,6",
          "2026-03-07 09:0.17,,,1,2,3,4,5", "2026-03-07 24:00.17,,,1,2,3,4,5",
          "2026-02-30 09:00.17,,,1,2,3,4,5", "2026-03-07 09:0:16, 2387098,x,",
          "2026-03-07 09:0:16, 2387098", "2026-03-07 09:x:16, 2387098,x,,",
          "2026-03-07 09:60:1, 2387098,x,,", "2026-03-07 09:0:16, ,x,,",
          "2026-03-07 09:0:16, 99999999999999999999,x,,", "2026-03-0"}) {
        EXPECT_THAT(Read(line + "\n"), ElementsAre("1: torn " + line));
    }
}

TEST(LastLine, WithoutItsNewlineIsTornWhateverItHolds) {
    EXPECT_THAT(Read(kResult + "\n" + kResult),
                ElementsAre("1: " + kReadResult, "2: torn " + kResult));
    EXPECT_THAT(Read("he"), ElementsAre("1: unknown he"));
    EXPECT_TRUE(Read("").empty());
}

TEST(RecordCutInTwoByAnother, IsPutTogether) {
    for (std::size_t cut = 1; cut < kSample.size(); ++cut) {
        const std::string first = kSample.substr(0, cut) + kResult;
        const std::string second = kSample.substr(cut);
        const auto told = Read(first + "\n" + second + "\n");
        ASSERT_EQ(told.size(), 4U) << first;
        EXPECT_EQ(told[1], "1: recovered " + kReadResult) << first;
        EXPECT_EQ(told[3], "2: recovered " + kReadSample) << first;
    }
}

TEST(RecordCutInTwoByAnother, IsPutTogetherAcrossWholeLines) {
    EXPECT_THAT(
        Read(kSample.substr(0, 30) + kResult + "\n" + kResult + "\n" + kSample.substr(30) + "\n"),
        testing::Contains("3: recovered " + kReadSample));
}

TEST(HalfARecord, WithoutItsOtherHalfIsTornAndTheNextOneFound) {
    EXPECT_THAT(Read(kSample.substr(0, 30) + kResult + "\n" + kSample + "\n"),
                ElementsAre("1: torn " + kSample.substr(0, 30) + kResult,
                            "1: recovered " + kReadResult, "2: " + kReadSample));
}

TEST(Messages, BeforeARecordOnItsLineAreUnknownAndTheRecordIsFound) {
    EXPECT_THAT(Read("pump servicedcell cleaned" + kSample + "\n"),
                ElementsAre("1: unknown pump servicedcell cleaned" + kSample,
                            "1: recovered " + kReadSample));
}

TEST(Pieces, MayEndAnywhere) {
    const std::string text = kSample + "\r\n" + kResult + "\nhello\n" + kSample;
    const auto whole = Read(text);
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        EXPECT_EQ(Read({text.substr(0, cut), text.substr(cut)}), whole) << cut;
    }
    std::vector<std::string> single;
    for (const char c : text) {
        single.emplace_back(1, c);
    }
    EXPECT_EQ(Read(single), whole);
}

TEST(LongLine, IsToldByItsBeginAndReadPast) {
    const std::string longest(LineParser::kLongestLine, 'x');
    EXPECT_THAT(Read(longest + "yz\n" + kResult + "\n"),
                ElementsAre("1: unknown " + longest, "2: " + kReadResult));
    EXPECT_THAT(Read({longest, longest, longest + "\n" + kResult + "\n"}),
                ElementsAre("1: unknown " + longest, "2: " + kReadResult));
    EXPECT_THAT(Read(std::string(LineParser::kLongestLine - kResult.size(), 'x') + kResult + "\n"),
                testing::Contains("1: recovered " + kReadResult));
}

} // namespace
} // namespace tavrelin::daylog
