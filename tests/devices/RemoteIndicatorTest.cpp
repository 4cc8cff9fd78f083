#include "devices/RemoteIndicator.h"

#include "tests/devices/FrontEnd.h"
#include "tests/devices/IndicatorWrites.h"

#include <cerrno>
#include <ostream>

namespace tavrelin {
namespace {

using sim::Texts;

constexpr const char* kColoursFailed = "RemoteIndicator::SetLEDColors failed!\n";
constexpr const char* kInitFailed =
    "RemoteIndicator::Init Configuring remote LED driver GPIO failed\n";

bool Init(RemoteIndicator& indicator) {
    return indicator.Init({{{3, 16}, {3, 18}, {3, 20}, {3, 17}, {3, 19}, {3, 21}}});
}

class RemoteIndicatorInit : public FrontEnd {};

TEST_F(RemoteIndicatorInit, MakesTheLinesThenEachAnOutputThenShowsColour0) {
    RemoteIndicator indicator;
    EXPECT_FALSE(indicator.Initialised());
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_TRUE(Init(indicator));
    EXPECT_TRUE(indicator.Initialised());
    EXPECT_EQ(Writes(board), InOrder({IndicatorSetUpWrites(), ColourWrites("111111")}));
    ExpectSilence();
}

TEST_F(RemoteIndicatorInit, IsWhatTheBoardIsWiredFor) {
    RemoteIndicator indicator;
    EXPECT_TRUE(indicator.Init(wiring::kIndicatorLeds));
    EXPECT_EQ(Writes(board), InOrder({IndicatorSetUpWrites(), ColourWrites("111111")}));
}

TEST_F(RemoteIndicatorInit, EndsWithTheLinesGivenBackInTheirOrder) {
    {
        RemoteIndicator indicator;
        EXPECT_TRUE(Init(indicator));
        board.Forget();
    }
    EXPECT_EQ(Writes(board),
              (Texts{"gpio unexport 112", "gpio unexport 114", "gpio unexport 116",
                     "gpio unexport 113", "gpio unexport 115", "gpio unexport 117"}));
}

TEST_F(RemoteIndicatorInit, BeforeItNoColourIsShown) {
    RemoteIndicator indicator;
    for (const std::uint32_t code : {0U, 1U, 11U}) {
        EXPECT_FALSE(indicator.SetLEDColors(code));
    }
    EXPECT_EQ(console.Output(), std::string(kColoursFailed) + kColoursFailed + kColoursFailed);
    EXPECT_EQ(console.Error(), "");
    EXPECT_EQ(board.Events(), Texts{});
}

TEST_F(RemoteIndicatorInit, BeforeItNoCableIsMeasured) {
    RemoteIndicator indicator;
    float length = -123.5F;
    EXPECT_FALSE(indicator.CalculateCableLength(length));
    EXPECT_EQ(length, -123.5F);
    EXPECT_EQ(console.Output(),
              std::string(kColoursFailed) + "RemoteIndicator::CalculateCableLength failed!\n");
    EXPECT_EQ(console.Error(), "");
    EXPECT_EQ(board.Events(), Texts{});
}

/// The how-manieth file that cannot be opened, and what is said about it.
struct FailingOpen {
    std::uint64_t occurrence;
    const char* output;
    const char* error;
};

// The opens of Init are: export, direction and edge of each line in turn (1 to 18), direction and
// edge of each (19 to 30), and the values of colour 0 (31 to 36).
FailingOpen Failing(std::uint64_t occurrence) {
    static const std::string colourFailed = std::string(kColoursFailed) + kInitFailed;
    constexpr const char* mode = "unable to set the gpio mode";
    constexpr const char* trigger = "unable to set the gpio trigger";
    if (occurrence > 30) {
        return {occurrence, colourFailed.c_str(), "unable to set the gpio value"};
    }
    if (occurrence > 18) {
        return {occurrence, kInitFailed, occurrence % 2 == 1 ? mode : trigger};
    }
    if (occurrence % 3 == 1) {
        return {occurrence, kInitFailed, "unable to lock a gpionot locked yet\n"};
    }
    // Set anew afterwards: does no harm.
    return {occurrence, "", occurrence % 3 == 2 ? mode : trigger};
}

class RemoteIndicatorInitFailing : public FrontEnd,
                                   public testing::WithParamInterface<std::uint64_t> {};

TEST_P(RemoteIndicatorInitFailing, IsTold) {
    const FailingOpen failing = Failing(GetParam());
    board.Fail("open", "/sys/class/gpio/*", EACCES, failing.occurrence);
    RemoteIndicator indicator;
    const bool works = std::string(failing.output).empty();
    EXPECT_EQ(Init(indicator), works);
    EXPECT_EQ(indicator.Initialised(), works);
    EXPECT_EQ(console.Output(), failing.output);
    EXPECT_EQ(console.Error(), failing.error);
}

INSTANTIATE_TEST_SUITE_P(AtOpen, RemoteIndicatorInitFailing,
                         testing::Range(std::uint64_t{1}, std::uint64_t{37}));

TEST_F(RemoteIndicatorInit, StopsAtTheFirstFailure) {
    FailToOpen("D18", "edge", 2);
    RemoteIndicator indicator;
    EXPECT_FALSE(Init(indicator));
    Texts writes = IndicatorSetUpWrites();
    writes.resize(21); // 18 to claim; direction and edge of line 1; direction of line 2
    EXPECT_EQ(Writes(board), writes);
}

TEST_F(RemoteIndicatorInit, ThatFailedMayBeTriedAgain) {
    FailToOpen("D21", "value");
    RemoteIndicator indicator;
    EXPECT_FALSE(Init(indicator));
    EXPECT_FALSE(indicator.SetLEDColors(0));
    EXPECT_TRUE(Init(indicator));
    EXPECT_TRUE(indicator.SetLEDColors(0));
}

TEST_F(RemoteIndicatorInit, OnceDoneAnswersTrueThoughALineCannotBeSetUpAgain) {
    RemoteIndicator indicator;
    EXPECT_TRUE(Init(indicator));
    board.FailForever("open", "/sys/class/gpio/pioD20/direction", EACCES);
    EXPECT_TRUE(Init(indicator));
    EXPECT_EQ(console.Output(), "");
}

TEST_F(RemoteIndicatorInit, DoneAgainIsOnlyAsGoodAsItsColour0) {
    RemoteIndicator indicator;
    EXPECT_TRUE(Init(indicator));
    board.FailForever("open", "/sys/class/gpio/pioD20/value", EACCES);
    EXPECT_FALSE(Init(indicator));
    EXPECT_FALSE(indicator.Initialised());
    EXPECT_EQ(console.Output(), std::string(kColoursFailed) + kInitFailed);
}

/// A colour code and the levels of lines 1 to 6 for it.
struct Colour {
    std::uint32_t code;
    const char* levels;
};

void PrintTo(const Colour& colour, std::ostream* out) {
    *out << "code " << colour.code;
}

class RemoteIndicatorColour : public FrontEnd, public testing::WithParamInterface<Colour> {
  protected:
    RemoteIndicatorColour() {
        EXPECT_TRUE(Init(indicator));
        board.Forget();
    }

    RemoteIndicator indicator;
};

TEST_P(RemoteIndicatorColour, IsWrittenLineByLine) {
    EXPECT_TRUE(indicator.SetLEDColors(GetParam().code));
    EXPECT_EQ(Writes(board), ColourWrites(GetParam().levels));
    ExpectSilence();
}

TEST_P(RemoteIndicatorColour, StopsAtALineThatCannotBeWritten) {
    for (std::size_t led = 0; led < kIndicatorLines.size(); ++led) {
        board.Forget();
        board.Fail("open", std::string("/sys/class/gpio/pio") + kIndicatorLines[led] + "/value",
                   EACCES);
        EXPECT_FALSE(indicator.SetLEDColors(GetParam().code));
        EXPECT_EQ(Writes(board), ColourWrites(std::string(GetParam().levels).substr(0, led)));
        board.StopFailing();
    }
    std::string output;
    std::string error;
    for (std::size_t led = 0; led < kIndicatorLines.size(); ++led) {
        output += kColoursFailed;
        error += "unable to set the gpio value";
    }
    EXPECT_EQ(console.Output(), output);
    EXPECT_EQ(console.Error(), error);
    EXPECT_TRUE(indicator.Initialised());
}

INSTANTIATE_TEST_SUITE_P(OfTheTable, RemoteIndicatorColour,
                         testing::Values(Colour{0, "111111"}, Colour{1, "010100"},
                                         Colour{2, "000110"}, Colour{3, "001100"},
                                         Colour{4, "110000"}, Colour{5, "100010"},
                                         Colour{6, "101000"}, Colour{7, "010001"},
                                         Colour{8, "000011"}, Colour{9, "000000"},
                                         Colour{10, "000001"}));
INSTANTIATE_TEST_SUITE_P(AboveTheTable, RemoteIndicatorColour,
                         testing::Values(Colour{11, "000000"}, Colour{12, "000000"},
                                         Colour{0xFFFF'FFFF, "000000"}));

} // namespace
} // namespace tavrelin
