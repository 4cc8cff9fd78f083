#include "devices/PinGroup.h"

#include "tests/support/BoardTest.h"
#include "tests/support/BoardWrites.h"
#include "tests/support/InOrder.h"

#include <array>
#include <cstddef>

namespace tavrelin {
namespace {

using sim::Texts;

// Not in the order of their numbers.
constexpr std::array<wiring::Line, 3> kLines = {{{2, 28}, {0, 1}, {3, 31}}};
constexpr std::array kNames = {"C28", "A1", "D31"};

const Texts kClaimed = {"gpio export 92",  "C28 direction in", "C28 edge none",
                        "gpio export 1",   "A1 direction in",  "A1 edge none",
                        "gpio export 127", "D31 direction in", "D31 edge none"};
const Texts kOutputs = {"C28 direction out", "C28 edge none",     "A1 direction out",
                        "A1 edge none",      "D31 direction out", "D31 edge none"};
const Texts kReleased = {"gpio unexport 92", "gpio unexport 1", "gpio unexport 127"};

class GroupOfPins : public BoardTest {
  protected:
    PinGroup group;
};

TEST_F(GroupOfPins, IsClaimedAndThenMadeOutputsLineByLine) {
    EXPECT_TRUE(group.Take(kLines));
    EXPECT_EQ(Writes(board), InOrder({kClaimed, kOutputs}));
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(GroupOfPins, GetsTheLevelThatIsGivenWithEachLine) {
    for (const char* level : {"0", "1"}) {
        board.Forget();
        EXPECT_TRUE(group.Take(kLines, *level - '0'));
        Texts outputs = kOutputs;
        for (std::size_t line = 0; line < kNames.size(); ++line) {
            outputs.insert(outputs.begin() + static_cast<std::ptrdiff_t>(3 * line + 2),
                           std::string(kNames[line]) + " value " + level);
        }
        EXPECT_EQ(Writes(board), InOrder({*level == '0' ? Texts{} : kReleased, kClaimed, outputs}));
    }
}

TEST_F(GroupOfPins, IsReleasedInTheSameOrder) {
    PinGroup().Take(kLines);
    const Texts writes = Writes(board);
    EXPECT_EQ(Texts(writes.end() - 3, writes.end()), kReleased);
}

TEST_F(GroupOfPins, IsDrivenToANumberLowestBitFirst) {
    EXPECT_TRUE(group.Take(kLines));
    board.Forget();
    EXPECT_TRUE(group.Write(6));
    EXPECT_TRUE(group.Write(9)); // the fourth bit has no line
    EXPECT_EQ(Writes(board), (Texts{"C28 value 0", "A1 value 1", "D31 value 1", "C28 value 1",
                                    "A1 value 0", "D31 value 0"}));
}

TEST_F(GroupOfPins, HasNoLinesBeforeItTookSome) {
    EXPECT_FALSE(group.Write(0));
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(GroupOfPins, GivesItsLinesOut) {
    EXPECT_TRUE(group.Take(kLines));
    EXPECT_EQ(group.At(1)->Bank(), 0U);
    EXPECT_EQ(group.At(1)->Bit(), 1U);
}

// The opens are: export, direction and edge of each line (1 to 9), and direction, edge and value of
// each (10 to 18).
TEST_F(GroupOfPins, StopsAtTheFirstStepThatFailsButForOneThatIsDoneAnew) {
    const std::array complaints = {"unable to set the gpio mode", "unable to set the gpio trigger",
                                   "unable to set the gpio value"};
    for (std::size_t open = 0; open < 18; ++open) {
        SCOPED_TRACE(open);
        PinGroup failing;
        NewBoard();
        board.Fail("open", "/sys/class/gpio/*", EACCES, open + 1);
        const bool claiming = open < 9;
        const bool ofExport = claiming && open % 3 == 0;
        EXPECT_EQ(failing.Take(kLines, kLevelLow), claiming && !ofExport);
        EXPECT_EQ(Console(), (Said{"", ofExport   ? "unable to lock a gpionot locked yet\n"
                                       : claiming ? complaints[open % 3 - 1]
                                                  : complaints[open % 3]}));
        if (!claiming) {
            EXPECT_EQ(Writes(board).size(), open);
        }
    }
}

TEST_F(GroupOfPins, StopsAtTheFirstLineThatCannotBeWritten) {
    EXPECT_TRUE(group.Take(kLines));
    board.Forget();
    FailToOpen("A1/value");
    EXPECT_FALSE(group.Write(7));
    EXPECT_EQ(Writes(board), (Texts{"C28 value 1"}));
    EXPECT_EQ(Console(), (Said{"", "unable to set the gpio value"}));
    EXPECT_TRUE(group.Write(7));
}

// An earlier run or another program: its line does the work, and is unexported with the others.
TEST_F(GroupOfPins, MakesDoWithALineThatSomebodyElseHasExportedAndReleasesIt) {
    board.Line("A1").exported = true;
    {
        PinGroup borrowing;
        EXPECT_TRUE(borrowing.Take(kLines, kLevelHigh));
        EXPECT_TRUE(board.Line("A1").output && board.Line("A1").level);
    }
    EXPECT_EQ(Console(), (Said{"", "already used\n"}));
    EXPECT_FALSE(board.Line("A1").exported);
}

TEST_F(GroupOfPins, RefusesALineThatNoPortHas) {
    EXPECT_FALSE(group.Take(std::array{wiring::Line{2, 32}}));
    EXPECT_EQ(Console(), (Said{"wrong gpio pin", "not locked yet\n"}));
}

} // namespace
} // namespace tavrelin
