#include "base/NumberText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

namespace tavrelin {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();

TEST(GeneralNumber, HasSixSignificantDigits) {
    EXPECT_EQ(GeneralText(0.1079061), "0.107906");
    EXPECT_EQ(GeneralText(185.04), "185.04");
    EXPECT_EQ(GeneralText(20), "20");
    EXPECT_EQ(GeneralText(123456.7), "123457");
    EXPECT_EQ(GeneralText(0.0001), "0.0001");
    EXPECT_EQ(GeneralText(0.0), "0");
    EXPECT_EQ(GeneralText(-0.0), "-0");
    EXPECT_EQ(GeneralText(-2.5), "-2.5");
}

TEST(GeneralNumber, TakesTheExponentFormBeyondThem) {
    EXPECT_EQ(GeneralText(999999), "999999");
    EXPECT_EQ(GeneralText(999999.5), "1e+06");
    EXPECT_EQ(GeneralText(3e6), "3e+06");
    EXPECT_EQ(GeneralText(2340000), "2.34e+06");
    EXPECT_EQ(GeneralText(0.00001), "1e-05");
    EXPECT_EQ(GeneralText(kLargest), "1.79769e+308");
    EXPECT_EQ(GeneralText(std::numeric_limits<double>::denorm_min()), "4.94066e-324");
}

TEST(GeneralNumber, IsSpelledAsAStreamSpellsIt) {
    for (const float number :
         {0.25F, 1.0F / 3.0F, 16777216.0F, -8388608.0F, 8388607.0F, 1e-10F, 100000.0F, 99999.95F}) {
        std::ostringstream stream;
        stream.imbue(std::locale::classic());
        stream << static_cast<double>(number);
        EXPECT_EQ(GeneralText(static_cast<double>(number)), stream.str());
    }
}

TEST(FixedNumber, HasThreeDigitsAfterThePoint) {
    EXPECT_EQ(FixedText(0.0), "0.000");
    EXPECT_EQ(FixedText(-0.0), "-0.000");
    EXPECT_EQ(FixedText(-0.0004), "-0.000");
    EXPECT_EQ(FixedText(975.389), "975.389");
    EXPECT_EQ(FixedText(-1714.8182), "-1714.818");
    EXPECT_EQ(FixedText(1e9), "1000000000.000");
    EXPECT_EQ(FixedText(0.0006), "0.001");
}

TEST(FixedNumber, HasRoomForTheLargest) {
    const std::string text = FixedText(-kLargest);
    EXPECT_EQ(text.size(), 1U + 309U + 4U);
    EXPECT_EQ(text.substr(0, 8), "-1797693");
    EXPECT_EQ(text.substr(text.size() - 4), ".000");
}

TEST(NumberThatIsNone, IsToldWithoutASignInFourCharactersWhereDecimalsAreFixed) {
    for (const double nan : {kNan, std::copysign(kNan, -1.0)}) {
        EXPECT_EQ(GeneralText(nan), "nan");
        EXPECT_EQ(FixedText(nan), " nan");
    }
}

TEST(EndlessNumber, KeepsItsSign) {
    EXPECT_EQ(GeneralText(kInfinity), "inf");
    EXPECT_EQ(GeneralText(-kInfinity), "-inf");
    EXPECT_EQ(FixedText(kInfinity), " inf");
    EXPECT_EQ(FixedText(-kInfinity), "-inf");
}

TEST(PaddedText, IsFilledFromTheLeftAndNeverCut) {
    EXPECT_EQ(ZeroPaddedText(7, 2), "07");
    EXPECT_EQ(ZeroPaddedText(31, 2), "31");
    EXPECT_EQ(ZeroPaddedText(0, 2), "00");
    EXPECT_EQ(ZeroPaddedText(12345, 4), "12345");
    EXPECT_EQ(RightAlignedText("7", 3), "  7");
    EXPECT_EQ(RightAlignedText("", 2), "  ");
    EXPECT_EQ(RightAlignedText("7.000", 4), "7.000");
}

/// Decimal commas and grouped thousands, as some places have them.
struct CommaPunctuation : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(NumberTexts, DoNotFollowTheLocale) {
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation));
    EXPECT_EQ(GeneralText(1234.5), "1234.5");
    EXPECT_EQ(FixedText(1234.5), "1234.500");
    EXPECT_EQ(ZeroPaddedText(2026, 4), "2026");
    std::locale::global(before);
}

} // namespace
} // namespace tavrelin
