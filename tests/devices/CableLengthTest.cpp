#include "devices/RemoteIndicator.h"

#include "tests/devices/FrontEnd.h"
#include "tests/devices/IndicatorWrites.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <limits>
#include <ostream>

namespace tavrelin {
namespace {

using sim::Texts;

constexpr const char* kDevice = "/sys/bus/iio/devices/iio:device0/";
constexpr const char* kCounts = "/sys/bus/iio/devices/iio:device0/in_voltage6_raw";
constexpr const char* kScale = "/sys/bus/iio/devices/iio:device0/in_voltage_scale";
constexpr float kUntouched = -123.5F;

/// An indicator that works, at the end of its cable.
class CableLength : public FrontEnd {
  protected:
    CableLength() {
        EXPECT_TRUE(indicator.Init(wiring::kIndicatorLeds));
        board.Forget();
    }

    bool Measure() { return indicator.CalculateCableLength(length); }

    RemoteIndicator indicator;
    float length = kUntouched;
};

std::string SixDigits(float figure) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.6g", static_cast<double>(figure));
    return text.data();
}

const Texts kDemultiplexerSetUp = {"gpio export 91",    "C27 direction in", "C27 edge none",
                                   "gpio export 92",    "C28 direction in", "C28 edge none",
                                   "gpio export 95",    "C31 direction in", "C31 edge none",
                                   "C27 direction out", "C27 edge none",    "C27 value 0",
                                   "C28 direction out", "C28 edge none",    "C28 value 0",
                                   "C31 direction out", "C31 edge none",    "C31 value 0"};
const Texts kSelectChannel2 = {"C27 value 0", "C28 value 1", "C31 value 0", "D18 value 1",
                               "D18 value 1"};
const Texts kSelectChannel0 = {"C27 value 0", "C28 value 0", "C31 value 0", "D18 value 1",
                               "D18 value 1"};
const Texts kDemultiplexerGivenBack = {"gpio unexport 91", "gpio unexport 92", "gpio unexport 95"};

TEST_F(CableLength, IsMeasuredUnderTheTestColourThenTheIndicatorIsIdle) {
    EXPECT_TRUE(Measure());
    EXPECT_EQ(Writes(board),
              InOrder({ColourWrites("010100"), kDemultiplexerSetUp, kSelectChannel2,
                       kSelectChannel0, ColourWrites("111111"), kDemultiplexerGivenBack}));
    ExpectSilence();
}

class CableOfKnownLength : public CableLength, public testing::WithParamInterface<double> {};

// The board turns the length into the lamp's voltage and the cable's, each a count of the
// converter.
TEST_P(CableOfKnownLength, ComesBackToSixDigits) {
    board.Model().analog.cableLength = GetParam();
    EXPECT_TRUE(Measure());
    EXPECT_EQ(SixDigits(length), SixDigits(static_cast<float>(GetParam())));
    ExpectSilence();
}

INSTANTIATE_TEST_SUITE_P(, CableOfKnownLength,
                         testing::Values(12.5, 25.0, 47.11, 100.0, 123.456, 250.0, 500.0, 987.654,
                                         3333.33, 10000.0));

TEST_F(CableLength, DoesNotDependOnTheLamp) {
    board.Model().analog.cableLength = 432.1;
    for (const double volts : {1.25, 4.0, 12.0, -4.0}) {
        board.Model().analog.lampVoltage = volts;
        EXPECT_TRUE(Measure());
        EXPECT_EQ(SixDigits(length), "432.1") << volts;
    }
}

TEST_F(CableLength, MayBeMeasuredAgain) {
    for (const double metres : {300.0, 20.0, 300.0}) {
        board.Model().analog.cableLength = metres;
        EXPECT_TRUE(Measure());
        EXPECT_EQ(SixDigits(length), SixDigits(static_cast<float>(metres)));
    }
}

/// A count that both readings give, the scale, and the length that this makes.
struct EqualReadings {
    const char* count;
    const char* scale;
    float length;
};

void PrintTo(const EqualReadings& readings, std::ostream* out) {
    *out << readings.count << " times " << readings.scale;
}

class CableFormula : public CableLength, public testing::WithParamInterface<EqualReadings> {};

// To the last bit: V0 times 5, less 3.023, by V2 over 7.87, by 0.0572, in single precision and in
// this order. Any other order gives other last bits for some of these.
TEST_P(CableFormula, IsExact) {
    board.ReplaceText(kCounts, GetParam().count);
    board.ReplaceText(kScale, GetParam().scale);
    EXPECT_TRUE(Measure());
    EXPECT_EQ(length, GetParam().length);
}

INSTANTIATE_TEST_SUITE_P(, CableFormula,
                         testing::Values(EqualReadings{"4096", "0.8", 0x1.16fae0p+9F},
                                         EqualReadings{"2048", "0.805664062", 0x1.adcf7ap+8F},
                                         EqualReadings{"1000", "0.805664062", 0x1.3e965cp+7F},
                                         EqualReadings{"617", "0.805664062", -0x1.51b8p+7F},
                                         EqualReadings{"16", "0.805664062", -0x1.f9811ap+14F},
                                         EqualReadings{"-512", "0.805664062", 0x1.ae1c66p+10F},
                                         EqualReadings{"3071", "0.3", 0x1.c34a9ep+7F}));

// Without a lamp there is no voltage to divide by; what V0 is depends on what a count is worth.
TEST_F(CableLength, IsInfiniteWithoutAVoltageAtTheLamp) {
    board.Model().analog.lampVoltage = 0.0;
    board.Model().analog.scale = "1024"; // 0.6 V is one count of 1 V
    EXPECT_TRUE(Measure());
    EXPECT_EQ(length, std::numeric_limits<float>::infinity());
    board.Model().analog.scale = "2048"; // 0.6 V is no count of 2 V
    EXPECT_TRUE(Measure());
    EXPECT_EQ(length, -std::numeric_limits<float>::infinity());
    ExpectSilence();
}

TEST_F(CableLength, IsNotANumberWhenNothingIsDividedByNothing) {
    board.Model().analog.lampVoltage = 0.0;
    board.Model().analog.scale = "619.1104"; // one count of 3.023 V / 5
    EXPECT_TRUE(Measure());
    EXPECT_TRUE(std::isnan(length)) << length;
    ExpectSilence();
}

// The opens on lines are: the values of colour 1 (1 to 6); export, direction and edge of each
// select line (7 to 15); direction, edge and value of each (16 to 24); for channels 2 and 0 the
// three values, the look at the switch, the switch and its reset (25 to 30 and 31 to 36); the
// values of colour 0 (37 to 42); the lines' release (43 to 45).
constexpr std::uint64_t kOpens = 45;

std::string OutputWhenOpenFails(std::uint64_t open) {
    const std::string end = "RemoteIndicator::CalculateCableLength failed!\n";
    const std::string noReading = "Demultiplexer::ReadVoltage failed!\n" + end;
    const std::string noChannel =
        "Demultiplexer::SelectChannel - Setting mux channel failed\n" + noReading;
    const std::uint64_t ofChannel = (open - 25) % 6;
    if (open <= 6 || (open >= 37 && open <= 42)) {
        return "RemoteIndicator::SetLEDColors failed!\n" + end;
    }
    if (open >= 43 || (open <= 15 && open % 3 != 1) || (open >= 25 && ofChannel == 3)) {
        return ""; // set anew, taken for low, or no longer of interest
    }
    if (open <= 24) {
        return "Demultiplexer::Init Configuring demultiplexer driver GPIO failed\n" + noChannel;
    }
    if (ofChannel <= 2) {
        return noChannel;
    }
    return (ofChannel == 4 ? "Demultiplexer::SetAnalogSwitch: failed!\n" + noChannel
                           : "Demultiplexer::ResetAnalogSwitchState: failed!\n" + noReading);
}

class CableLengthFailing : public CableLength, public testing::WithParamInterface<std::uint64_t> {};

TEST_P(CableLengthFailing, IsTold) {
    board.Fail("open", "/sys/class/gpio/*", EACCES, GetParam());
    const std::string output = OutputWhenOpenFails(GetParam());
    EXPECT_EQ(Measure(), output.empty());
    EXPECT_EQ(console.Output(), output);
    EXPECT_NE(console.Error() == "", GetParam() != 28 && GetParam() != 34);
    EXPECT_EQ(length != kUntouched, output.empty() || GetParam() >= 37);
}

INSTANTIATE_TEST_SUITE_P(AtOpen, CableLengthFailing, testing::Range(std::uint64_t{1}, kOpens + 1));

TEST_F(CableLength, HasNoFurtherOpenThatCouldFail) {
    board.Fail("open", "/sys/class/gpio/*", EACCES, kOpens + 1);
    EXPECT_TRUE(Measure());
    ExpectSilence();
}

TEST_F(CableLength, LeavesTheTestColourWhenItCannotBeMeasured) {
    board.TakeAway(kCounts);
    EXPECT_FALSE(Measure());
    EXPECT_EQ(length, kUntouched);
    EXPECT_TRUE(board.Model().analog.ShowsTestColour());
    EXPECT_FALSE(board.Line("C27").exported || board.Line("C28").exported ||
                 board.Line("C31").exported);
    EXPECT_EQ(console.Output(), "Demultiplexer::ReadVoltage failed!\n"
                                "RemoteIndicator::CalculateCableLength failed!\n");
    EXPECT_EQ(console.Error(), "ADC: can't read raw counts\n");
}

TEST_F(CableLength, FailsAtTheSecondVoltageToo) {
    board.Fail("open", kScale, EACCES, 2);
    EXPECT_FALSE(Measure());
    EXPECT_EQ(length, kUntouched);
    EXPECT_EQ(Writes(board).back(), "gpio unexport 95");
    EXPECT_EQ(console.Output(), "Demultiplexer::ReadVoltage failed!\n"
                                "RemoteIndicator::CalculateCableLength failed!\n");
    EXPECT_EQ(console.Error(), "ADC: can't read the reference\n");
}

TEST_F(CableLength, FailsWithoutAConverter) {
    board.FailForever("access", kDevice, ENOENT);
    EXPECT_FALSE(Measure());
    EXPECT_EQ(console.Output(), "Demultiplexer::ReadVoltage failed!\n"
                                "RemoteIndicator::CalculateCableLength failed!\n");
    EXPECT_EQ(console.Error(), "ADC: device does not exist\n");
}

TEST_F(CableLength, MakesDoWithASelectLineThatAnEarlierRunLeftBehind) {
    board.Line("C28").exported = true;
    EXPECT_TRUE(Measure());
    EXPECT_EQ(SixDigits(length), "25");
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "already used\n");
}

} // namespace
} // namespace tavrelin
