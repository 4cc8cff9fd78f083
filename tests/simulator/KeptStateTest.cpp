#include "simulator/board/KeptState.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::Board;

constexpr const char* kRunning = "line A2 exported low none\n"
                                 "line B15 free high none\n"
                                 "line B18 exported in both active_low\n"
                                 "channel 0 free 0 0 0\n"
                                 "channel 1 exported 625000 312500 1\n"
                                 "channel 2 exported 1562500 781250 0 inversed\n"
                                 "channel 3 free 1000000 1000000 1\n"
                                 "card mounted\n";

TEST(KeptState, IsRestoredAsItWasWritten) {
    Board board({}, 1, 0);
    EXPECT_TRUE(RestoreState(board, kRunning));
    EXPECT_EQ(KeptState(board), kRunning);
}

TEST(KeptState, MovesWhatItRestores) {
    Board board({}, 1, 0);
    ASSERT_TRUE(RestoreState(board, kRunning));
    EXPECT_TRUE(board.ValveOpen());
    EXPECT_TRUE(board.shaft.Turning());
    EXPECT_FALSE(board.Stirring());
    EXPECT_TRUE(board.card.mounted);
}

TEST(KeptState, HoldsWhatLiesBehindTheLines) {
    Board board({}, 1, 1000);
    const std::string kept = std::string(kRunning) + "slot 0 1 4096\nshaft 1210\ncell 0.5 700 "
                                                     "1500000000\n";
    EXPECT_TRUE(RestoreState(board, kept + "clock 5\n"));
    EXPECT_FALSE(board.card.present);
    EXPECT_TRUE(board.card.mounted);
    EXPECT_TRUE(board.shaft.OnFlag(0));
    EXPECT_FALSE(board.lines.At(50).level) << "the flag stands in the home sensor";
    EXPECT_DOUBLE_EQ(board.cell.Absorbance(0, 0), 0.25) << "half the dose";
    EXPECT_EQ(KeptState(board) + KeptWorld(board), kept + "clock 1000\n");
}

TEST(KeptState, OfAFreshBoardChangesNothing) {
    Board board({}, 1, 0);
    const std::string fresh = KeptState(board);
    EXPECT_TRUE(RestoreState(board, ""));
    EXPECT_TRUE(RestoreState(board, fresh));
    EXPECT_EQ(KeptState(board), fresh);
}

TEST(KeptState, RefusesAnyOtherText) {
    for (const char* text : {"line B32 exported in none\n", "line B18 exported up none\n",
                             "line B18 exported in some\n", "line B18\n", "lines\n", "\n",
                             "channel 4 exported 1 1 1\n", "slot 1\n", "shaft\n",
                             "channel 0 exported 1\n", "channel x\n"}) {
        Board board({}, 1, 0);
        EXPECT_FALSE(RestoreState(board, text)) << text;
    }
}

} // namespace
} // namespace tavrelin
