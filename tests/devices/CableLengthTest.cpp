#include "devices/RemoteIndicator.h"

#include "tests/devices/IndicatorWrites.h"

#include <cmath>
#include <cstdio>
#include <limits>

namespace tavrelin {
namespace {

using sim::Texts;

const std::string kNotMeasured = "RemoteIndicator::CalculateCableLength failed!\n";
const std::string kNotRead = "Demultiplexer::ReadVoltage failed!\n" + kNotMeasured;
const std::string kNotSelected =
    "Demultiplexer::SelectChannel - Setting mux channel failed\n" + kNotRead;

/// An indicator that works, at the end of its cable.
class CableLength : public BoardTest {
  protected:
    CableLength() {
        EXPECT_TRUE(indicator.Init(wiring::kIndicatorLeds));
        board.Forget();
    }

    bool Measure() { return indicator.CalculateCableLength(length); }
    /// The length of a cable on the board, to the digits that the formula keeps.
    std::string Measured(double metres) {
        board.Model().analog.cableLength = metres;
        EXPECT_TRUE(Measure());
        return SixDigits(length);
    }
    static std::string SixDigits(float figure) {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.6g", static_cast<double>(figure));
        return text.data();
    }
    /// A measurement that fails without a length; the demultiplexer's lines are given back.
    void ExpectFailure(const std::string& output, const char* error) {
        EXPECT_FALSE(Measure());
        EXPECT_EQ(length, kUntouched);
        EXPECT_EQ(Console(), (Said{output, error}));
        EXPECT_FALSE(board.Line("C27").exported || board.Line("C28").exported ||
                     board.Line("C31").exported);
        EXPECT_TRUE(board.Model().analog.ShowsTestColour());
    }

    RemoteIndicator indicator;
    float length = kUntouched;
};

TEST_F(CableLength, IsMeasuredUnderTheTestColourThenTheIndicatorIsIdle) {
    EXPECT_TRUE(Measure());
    const Texts read = {"D18 value 1", "D18 value 1"};
    EXPECT_EQ(Writes(board),
              InOrder({ColourWrites("010100"), kDemultiplexerSetUp, SelectWrites("010"), read,
                       SelectWrites("000"), read, ColourWrites("111111"), kDemultiplexerReleased}));
    EXPECT_EQ(Console(), kSilence);
}

// The board turns the length into the lamp's voltage and the cable's, each a count of the
// converter.
TEST_F(CableLength, ComesBackToSixDigitsWhateverTheLamp) {
    for (const double metres :
         {12.5, 25.0, 47.11, 100.0, 123.456, 250.0, 500.0, 987.654, 3333.33, 10000.0}) {
        EXPECT_EQ(Measured(metres), SixDigits(static_cast<float>(metres)));
    }
    for (const double volts : {1.25, 4.0, 12.0, -4.0}) {
        board.Model().analog.lampVoltage = volts;
        EXPECT_EQ(Measured(432.1), "432.1") << volts;
    }
    EXPECT_EQ(Console(), kSilence);
}

// To the last bit: V0 times 5, less 3.023, by V2 over 7.87, by 0.0572, in single precision and in
// this order. Any other order gives other last bits for some of these. Both readings give the same
// count.
TEST_F(CableLength, IsExact) {
    struct Case {
        const char *count, *scale;
        float length;
    };
    for (const Case& reading :
         {Case{"4096", "0.8", 0x1.16fae0p+9F}, Case{"2048", "0.805664062", 0x1.adcf7ap+8F},
          Case{"1000", "0.805664062", 0x1.3e965cp+7F}, Case{"617", "0.805664062", -0x1.51b8p+7F},
          Case{"16", "0.805664062", -0x1.f9811ap+14F}, Case{"-512", "0.805664062", 0x1.ae1c66p+10F},
          Case{"3071", "0.3", 0x1.c34a9ep+7F}}) {
        board.ReplaceText(kCounts, reading.count);
        board.ReplaceText(kScale, reading.scale);
        EXPECT_TRUE(Measure());
        EXPECT_EQ(length, reading.length) << reading.count;
    }
}

// Without a lamp there is no voltage to divide by; what V0 is depends on what a count is worth.
TEST_F(CableLength, IsInfiniteOrNotANumberWithoutAVoltageAtTheLamp) {
    board.Model().analog.lampVoltage = 0.0;
    board.Model().analog.scale = "1024"; // 0.6 V is one count of 1 V
    EXPECT_TRUE(Measure());
    EXPECT_EQ(length, std::numeric_limits<float>::infinity());
    board.Model().analog.scale = "2048"; // 0.6 V is no count of 2 V
    EXPECT_TRUE(Measure());
    EXPECT_EQ(length, -std::numeric_limits<float>::infinity());
    board.Model().analog.scale = "619.1104"; // one count of 3.023 V / 5
    EXPECT_TRUE(Measure());
    EXPECT_TRUE(std::isnan(length)) << length;
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(CableLength, IsNotMeasuredWithoutTheTestColour) {
    FailToOpen("D21/value");
    EXPECT_FALSE(Measure());
    EXPECT_EQ(Writes(board), ColourWrites("01010"));
    EXPECT_EQ(console.Output(), "RemoteIndicator::SetLEDColors failed!\n" + kNotMeasured);
}

TEST_F(CableLength, IsNotMeasuredWithoutTheDemultiplexer) {
    FailToOpen("C31/value");
    ExpectFailure("Demultiplexer::Init Configuring demultiplexer driver GPIO failed\n" +
                      kNotSelected,
                  "unable to set the gpio value");
}

TEST_F(CableLength, IsNotMeasuredWithoutTheFirstVoltage) {
    board.Fail("open", kScale, EACCES, 1);
    ExpectFailure(kNotRead, "ADC: can't read the reference\n");
}

TEST_F(CableLength, IsNotMeasuredWithoutTheSecondVoltage) {
    board.Fail("open", kScale, EACCES, 2);
    ExpectFailure(kNotRead, "ADC: can't read the reference\n");
}

TEST_F(CableLength, FailsWithoutAConverter) {
    board.FailForever("access", kConverter, ENOENT);
    ExpectFailure(kNotRead, "ADC: device does not exist\n");
}

TEST_F(CableLength, IsStoredEvenWhenOnlyTheIdleColourCannotBeShown) {
    FailToOpen("D16/value", 2);
    EXPECT_FALSE(Measure());
    EXPECT_EQ(SixDigits(length), "25");
    EXPECT_EQ(Console(), (Said{"RemoteIndicator::SetLEDColors failed!\n" + kNotMeasured,
                               "unable to set the gpio value"}));
}

TEST_F(CableLength, MakesDoWithASelectLineThatAnEarlierRunLeftBehind) {
    board.Line("C28").exported = true;
    EXPECT_EQ(Measured(25.0), "25");
    EXPECT_EQ(Console(), (Said{"", "already used\n"}));
}

} // namespace
} // namespace tavrelin
