// The board's answers are rubbish: the instrument neither crashes nor waits longer than it must.

#include "tests/support/InstrumentRun.h"
#include "tests/support/Text.h"
#include "tests/system/LogFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>

namespace tavrelin {
namespace {

constexpr std::size_t kSamplesOfAMeasurement = 13 * 4 + 3;
constexpr std::uint32_t kCommandSentBack = 0xA0800000; // stands for: no new result

// What the instrument makes of a word: 25 bits from bit 5 on, taken over in single precision, of
// which bit 24 says that the low 24 bits are not negative.
std::int32_t ReadingOf(std::uint32_t word, std::int32_t last) {
    if (word == kCommandSentBack) {
        return last;
    }
    const auto number = static_cast<std::uint32_t>(static_cast<float>(word >> 5U & 0x1FFFFFFU));
    const auto low = static_cast<std::int32_t>(number & 0xFFFFFFU);
    return (number & 0x1000000U) != 0 ? low : low - 0x1000000;
}

// The words at the edges of the format, then repeatable ones of any value.
std::vector<std::uint32_t> AnyWords() {
    std::vector<std::uint32_t> words = {
        kCommandSentBack, 0x00000000, 0xFFFFFFFF, 0x20000000, 0x1FFFFFE0,       0x3FFFFFE0,
        0x3FFFFFDF,       0x0000001F, 0x00000020, 0xC0000000, 0x20000020,       0x20000040,
        kCommandSentBack, 0xA0800001, 0xA0810000, 0x80A00000, kCommandSentBack, kCommandSentBack};
    std::uint64_t state = 47;
    while (words.size() < kSamplesOfAMeasurement) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        words.push_back(static_cast<std::uint32_t>(state >> 32U));
    }
    return words;
}

RunResult RunWithWords(const std::vector<std::uint32_t>& words) {
    std::string board = "[converter]\nwords = [";
    for (const std::uint32_t word : words) {
        board += std::to_string(word) + ", ";
    }
    return RunInstrument({.board = board + "]\n", .measurements = 1});
}

TEST(ConverterWords, OfAnyValueBecomeReadings) {
    const std::vector<std::uint32_t> words = AnyWords();
    std::vector<long> expected;
    std::int32_t last = 0;
    for (const std::uint32_t word : words) {
        last = ReadingOf(word, last);
        expected.push_back(last);
    }
    const RunResult run = RunWithWords(words);
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(ReadingsIn(run.Log()), expected);
    EXPECT_THAT(TornLines(run.Log()), testing::IsEmpty());
}

// A converter that never has anything new leaves every reading at 0.
TEST(ConverterWords, ThatBringNothingNewRepeatTheLastReading) {
    const RunResult run =
        RunWithWords(std::vector<std::uint32_t>(kSamplesOfAMeasurement, kCommandSentBack));
    EXPECT_EQ(ReadingsIn(run.Log()), std::vector<long>(kSamplesOfAMeasurement, 0));
    EXPECT_THAT(ResultLines(run.Log()),
                testing::ElementsAre(testing::EndsWith(",,,-1,-1714.82,0,0,0")));
}

RunResult RunWithAttribute(const std::string& path, const std::string& text) {
    return RunInstrument({.board = "[attributes]\n\"" + path + "\" = \"" + text + "\"\n",
                          .measurements = 1,
                          .boardTime = 120});
}

// An attribute is a page of text at most.
const std::string kPage(4000, ' ');

class AttributeText : public testing::TestWithParam<std::string> {};

TEST_P(AttributeText, OfAnyKindIsBorne) {
    const std::array<std::string, 6> texts = {
        "",         "\\n", " \\t 1 0", std::string(100000, '1'), "\\u0000\\u0001\\u00ff\\u001b1",
        kPage + "0"};
    for (const std::string& text : texts) {
        SCOPED_TRACE(text.substr(0, 20));
        const RunResult run = RunWithAttribute(GetParam(), text);
        EXPECT_EQ(run.status, kEndedAsAsked);
        EXPECT_THAT(TornLines(run.Log()), testing::IsEmpty());
        if (ResultLines(run.Log()).empty()) {
            EXPECT_THAT(run.console, testing::EndsWith(",!!!Error: Motor Find Start!!!\n"));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, AttributeText,
                         testing::Values("/sys/class/pwm/pwmchip0/pwm0/enable",
                                         "/sys/class/pwm/pwmchip0/pwm1/enable",
                                         "/sys/class/pwm/pwmchip0/pwm2/enable",
                                         "/sys/class/pwm/pwmchip0/pwm3/enable",
                                         "/sys/class/gpio/pioB18/value"));

constexpr const char* kChannelCount = "/sys/class/pwm/pwmchip0/npwm";

// Its first character's code counts, and that of any printed character is more than enough.
TEST(ChannelCountText, OfAnyPrintedKindLetsMeasurementsRun) {
    for (const std::string& text :
         {std::string("0"), std::string(" \\t 1 0"), std::string(100000, '9'), kPage + "x",
          std::string("\\u001b\\u0000")}) {
        SCOPED_TRACE(text.substr(0, 20));
        EXPECT_EQ(ResultLines(RunWithAttribute(kChannelCount, text).Log()).size(), 1U);
    }
}

// No channel, then: priming leaves the motor locked, and the reagent addition waits for it.
TEST(ChannelCountText, OfNoCharacterLeavesTheInstrumentWithoutChannels) {
    for (const char* text : {"", "\\n", "\\u0000"}) {
        SCOPED_TRACE(text);
        const RunResult run = RunWithAttribute(kChannelCount, text);
        EXPECT_EQ(run.status, kDeadlock);
        EXPECT_THAT(run.errors,
                    testing::StartsWith("wrong pwm channelwrong pwm channelwrong pwm channel"));
        // The LED, then the valve.
        EXPECT_THAT(run.console, testing::EndsWith("main.cpp, 889: 11, 0\n"
                                                   "MeasurementCycle.cpp, 451, Elements: 3\n"
                                                   "not locked yet\n"
                                                   "not locked yet\n"
                                                   "ValvePWM::ValveOff: error turning valve off\n"
                                                   "MeasurementCycle.cpp, 1096, success: 0\n"));
        EXPECT_THAT(TornLines(run.Log()), testing::IsEmpty());
    }
}

// Set back within step 5, the clock makes that step last an hour longer: its samples fill the gap.
// The search, whose time counts from before, finds its flag all the same.
TEST(Clock, MayBeSetBackByAnHour) {
    const RunResult run = RunInstrument({.scenario = "clock-jumps-back", .measurements = 1});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_THAT(run.console, testing::Not(testing::HasSubstr("!!!Error")));
    EXPECT_THAT(TornLines(run.Log()), testing::IsEmpty());
    constexpr std::size_t samplesOfAnHour = 4UL * 3600;
    EXPECT_EQ(SamplesOf("Sample Flush & Delivery", run.Log()), samplesOfAnHour + 4U);
    EXPECT_EQ(SamplesOf("Sample Settling Time", run.Log()), 4U);
    EXPECT_EQ(ResultLines(run.Log()).size(), 1U);
}

} // namespace
} // namespace tavrelin
