#include "devices/RemoteIndicator.h"

#include "tests/devices/IndicatorWrites.h"

namespace tavrelin {
namespace {

using sim::Texts;

const std::string kColoursFailed = "RemoteIndicator::SetLEDColors failed!\n";
const std::string kInitFailed = "RemoteIndicator::Init Configuring remote LED driver GPIO failed\n";

class RemoteIndicatorInit : public BoardTest {
  protected:
    bool Init() { return indicator.Init({{{3, 16}, {3, 18}, {3, 20}, {3, 17}, {3, 19}, {3, 21}}}); }

    RemoteIndicator indicator;
};

TEST_F(RemoteIndicatorInit, MakesTheLinesThenEachAnOutputThenShowsColour0) {
    EXPECT_FALSE(indicator.Initialised());
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_TRUE(Init());
    EXPECT_TRUE(indicator.Initialised());
    EXPECT_EQ(Writes(board), InOrder({IndicatorSetUpWrites(), ColourWrites("111111")}));
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(RemoteIndicatorInit, EndsWithTheLinesThatTheBoardIsWiredForGivenBackInTheirOrder) {
    {
        RemoteIndicator other;
        EXPECT_TRUE(other.Init(wiring::kIndicatorLeds));
        EXPECT_EQ(Writes(board), InOrder({IndicatorSetUpWrites(), ColourWrites("111111")}));
        board.Forget();
    }
    EXPECT_EQ(Writes(board),
              (Texts{"gpio unexport 112", "gpio unexport 114", "gpio unexport 116",
                     "gpio unexport 113", "gpio unexport 115", "gpio unexport 117"}));
}

TEST_F(RemoteIndicatorInit, MakesDoWithALineThatIsAlreadyUsedAndUnexportsIt) {
    board.Line("D20").exported = true;
    {
        RemoteIndicator other;
        EXPECT_TRUE(other.Init(wiring::kIndicatorLeds));
        EXPECT_EQ(Console(), (Said{"", "already used\n"}));
    }
    EXPECT_FALSE(board.Line("D20").exported);
}

TEST_F(RemoteIndicatorInit, BeforeItNothingIsShownOrMeasured) {
    EXPECT_FALSE(indicator.SetLEDColors(0));
    EXPECT_FALSE(indicator.SetLEDColors(11));
    float length = kUntouched;
    EXPECT_FALSE(indicator.CalculateCableLength(length));
    EXPECT_EQ(length, kUntouched);
    EXPECT_EQ(Console(), (Said{kColoursFailed + kColoursFailed + kColoursFailed +
                                   "RemoteIndicator::CalculateCableLength failed!\n",
                               ""}));
    EXPECT_EQ(board.Events(), Texts{});
}

TEST_F(RemoteIndicatorInit, StopsAtTheFirstLineThatCannotBeSetUp) {
    FailToOpen("D18/edge", 2);
    EXPECT_FALSE(Init());
    EXPECT_FALSE(indicator.Initialised());
    Texts writes = IndicatorSetUpWrites();
    writes.resize(21); // 18 to claim; direction and edge of line 1; direction of line 2
    EXPECT_EQ(Writes(board), writes);
    EXPECT_EQ(Console(), (Said{kInitFailed, "unable to set the gpio trigger"}));
}

TEST_F(RemoteIndicatorInit, ThatCannotShowColour0FailsAndMayBeTriedAgain) {
    FailToOpen("D21/value");
    EXPECT_FALSE(Init());
    EXPECT_FALSE(indicator.Initialised());
    EXPECT_EQ(Console(), (Said{kColoursFailed + kInitFailed, "unable to set the gpio value"}));
    EXPECT_FALSE(indicator.SetLEDColors(0));
    EXPECT_TRUE(Init());
    EXPECT_TRUE(indicator.SetLEDColors(0));
}

TEST_F(RemoteIndicatorInit, OnceDoneAnswersTrueThoughALineCannotBeSetUpAgain) {
    EXPECT_TRUE(Init());
    board.FailForever("open", PathOf("D20/direction"), EACCES);
    EXPECT_TRUE(Init());
    EXPECT_EQ(console.Output(), "");
}

TEST_F(RemoteIndicatorInit, DoneAgainIsOnlyAsGoodAsItsColour0) {
    EXPECT_TRUE(Init());
    board.FailForever("open", PathOf("D20/value"), EACCES);
    EXPECT_FALSE(Init());
    EXPECT_FALSE(indicator.Initialised());
    EXPECT_EQ(console.Output(), kColoursFailed + kInitFailed);
}

using RemoteIndicatorColour = RemoteIndicatorInit;

TEST_F(RemoteIndicatorColour, IsWrittenLineByLine) {
    EXPECT_TRUE(Init());
    for (const auto& [code, levels] :
         {std::pair{0U, "111111"}, std::pair{1U, "010100"}, std::pair{2U, "000110"},
          std::pair{3U, "001100"}, std::pair{4U, "110000"}, std::pair{5U, "100010"},
          std::pair{6U, "101000"}, std::pair{7U, "010001"}, std::pair{8U, "000011"},
          std::pair{9U, "000000"}, std::pair{10U, "000001"}, std::pair{11U, "000000"},
          std::pair{12U, "000000"}, std::pair{0xFFFF'FFFFU, "000000"}}) {
        board.Forget();
        EXPECT_TRUE(indicator.SetLEDColors(code));
        EXPECT_EQ(Writes(board), ColourWrites(levels)) << code;
    }
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(RemoteIndicatorColour, StopsAtALineThatCannotBeWritten) {
    EXPECT_TRUE(Init());
    board.Forget();
    FailToOpen("D17/value");
    EXPECT_FALSE(indicator.SetLEDColors(6));
    EXPECT_EQ(Writes(board), ColourWrites("101"));
    EXPECT_EQ(Console(), (Said{kColoursFailed, "unable to set the gpio value"}));
    EXPECT_TRUE(indicator.Initialised());
}

} // namespace
} // namespace tavrelin
