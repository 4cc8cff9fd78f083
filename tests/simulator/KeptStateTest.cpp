#include "simulator/board/KeptState.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::Board;

constexpr const char* kRunning = "line A2 exported low none\n"
                                 "line B15 free high none\n"
                                 "line B18 exported in both\n"
                                 "channel 0 free 0 0 0\n"
                                 "channel 1 exported 625000 312500 1\n"
                                 "channel 2 exported 1562500 781250 0\n"
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

TEST(KeptState, OfAFreshBoardChangesNothing) {
    Board board({}, 1, 0);
    const std::string fresh = KeptState(board);
    EXPECT_TRUE(RestoreState(board, ""));
    EXPECT_TRUE(RestoreState(board, fresh));
    EXPECT_EQ(KeptState(board), fresh);
}

TEST(KeptState, RefusesAnyOtherText) {
    for (const char* text :
         {"line B32 exported in none\n", "line B18 exported up none\n",
          "line B18 exported in some\n", "line B18\n", "lines\n", "\n",
          "channel 4 exported 1 1 1\n", "channel 0 exported 1\n", "channel x\n"}) {
        Board board({}, 1, 0);
        EXPECT_FALSE(RestoreState(board, text)) << text;
    }
}

} // namespace
} // namespace tavrelin
