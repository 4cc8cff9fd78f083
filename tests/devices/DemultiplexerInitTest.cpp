#include "tests/devices/FrontEnd.h"

#include <cerrno>
#include <ostream>

namespace tavrelin {
namespace {

using sim::Texts;

constexpr const char* kInitFailed =
    "Demultiplexer::Init Configuring demultiplexer driver GPIO failed\n";

// The lines are C27, C28 and C31; the kernel numbers them 91, 92 and 95.
const Texts kClaimed = {"gpio export 91", "C27 direction in", "C27 edge none",
                        "gpio export 92", "C28 direction in", "C28 edge none",
                        "gpio export 95", "C31 direction in", "C31 edge none"};
const Texts kConfigured = {"C27 direction out", "C27 edge none", "C27 value 0",
                           "C28 direction out", "C28 edge none", "C28 value 0",
                           "C31 direction out", "C31 edge none", "C31 value 0"};

Texts Together(Texts first, const Texts& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

bool Init(Demultiplexer& demultiplexer) {
    return demultiplexer.Init({{{2, 27}, {2, 28}, {2, 31}}});
}

class DemultiplexerInit : public FrontEnd {};

TEST_F(DemultiplexerInit, IsStillToCome) {
    Demultiplexer demultiplexer;
    EXPECT_FALSE(demultiplexer.Initialised());
    EXPECT_EQ(demultiplexer.Channel(), 0U);
    EXPECT_EQ(board.Events(), Texts{});
}

TEST_F(DemultiplexerInit, MakesThePinsThenEachALowOutput) {
    Demultiplexer demultiplexer;
    EXPECT_TRUE(Init(demultiplexer));
    EXPECT_TRUE(demultiplexer.Initialised());
    EXPECT_EQ(Writes(board), Together(kClaimed, kConfigured));
    ExpectSilence();
}

TEST_F(DemultiplexerInit, TakesTheLinesThatItIsGiven) {
    Demultiplexer demultiplexer;
    EXPECT_TRUE(demultiplexer.Init({{{0, 1}, {1, 0}, {3, 31}}}));
    EXPECT_TRUE(board.Line("A1").output);
    EXPECT_TRUE(board.Line("B0").output);
    EXPECT_TRUE(board.Line("D31").output);
}

TEST_F(DemultiplexerInit, EndsWithTheLinesGivenBack) {
    {
        Demultiplexer demultiplexer;
        EXPECT_TRUE(Init(demultiplexer));
        board.Forget();
    }
    EXPECT_EQ(Writes(board), (Texts{"gpio unexport 91", "gpio unexport 92", "gpio unexport 95"}));
}

TEST_F(DemultiplexerInit, RefusesABitThatNoPortHas) {
    {
        Demultiplexer demultiplexer;
        EXPECT_FALSE(demultiplexer.Init({{{2, 27}, {2, 32}, {2, 31}}}));
        EXPECT_FALSE(demultiplexer.Initialised());
        EXPECT_EQ(console.Output(), "wrong gpio pin" + std::string(kInitFailed));
    }
    EXPECT_FALSE(board.Line("C27").exported);
    EXPECT_FALSE(board.Line("C31").exported);
}

// A line left behind by an earlier run is complained of, but does its work.
TEST_F(DemultiplexerInit, MakesDoWithALineThatIsAlreadyUsed) {
    board.Line("C28").exported = true;
    Demultiplexer demultiplexer;
    EXPECT_TRUE(Init(demultiplexer));
    EXPECT_EQ(console.Error(), "already used\n");
    EXPECT_EQ(console.Output(), "");
}

/// The how-manieth file that cannot be opened, what is said about it, and whether Init minds.
struct FailingOpen {
    std::uint64_t occurrence;
    const char* complaint;
    bool works;
};

void PrintTo(const FailingOpen& open, std::ostream* out) {
    *out << "open " << open.occurrence;
}

class DemultiplexerInitFailing : public FrontEnd,
                                 public testing::WithParamInterface<FailingOpen> {};

TEST_P(DemultiplexerInitFailing, IsTold) {
    board.Fail("open", "/sys/class/gpio/*", EACCES, GetParam().occurrence);
    Demultiplexer demultiplexer;
    EXPECT_EQ(Init(demultiplexer), GetParam().works);
    EXPECT_EQ(demultiplexer.Initialised(), GetParam().works);
    EXPECT_EQ(console.Output(), GetParam().works ? "" : kInitFailed);
    EXPECT_EQ(console.Error(), GetParam().complaint);
}

constexpr const char* kNotClaimed = "unable to lock a gpionot locked yet\n";
constexpr const char* kMode = "unable to set the gpio mode";
constexpr const char* kTrigger = "unable to set the gpio trigger";
constexpr const char* kValue = "unable to set the gpio value";

// Each of the three constructors exports, sets the direction and the edge. Only an export matters:
// the others are set anew.
INSTANTIATE_TEST_SUITE_P(
    WhileTheLinesAreClaimed, DemultiplexerInitFailing,
    testing::Values(FailingOpen{1, kNotClaimed, false}, FailingOpen{2, kMode, true},
                    FailingOpen{3, kTrigger, true}, FailingOpen{4, kNotClaimed, false},
                    FailingOpen{5, kMode, true}, FailingOpen{6, kTrigger, true},
                    FailingOpen{7, kNotClaimed, false}, FailingOpen{8, kMode, true},
                    FailingOpen{9, kTrigger, true}));

INSTANTIATE_TEST_SUITE_P(
    WhileTheLinesAreConfigured, DemultiplexerInitFailing,
    testing::Values(FailingOpen{10, kMode, false}, FailingOpen{11, kTrigger, false},
                    FailingOpen{12, kValue, false}, FailingOpen{13, kMode, false},
                    FailingOpen{14, kTrigger, false}, FailingOpen{15, kValue, false},
                    FailingOpen{16, kMode, false}, FailingOpen{17, kTrigger, false},
                    FailingOpen{18, kValue, false}));

TEST_F(DemultiplexerInit, StopsAtTheFirstFailure) {
    FailToOpen("C28", "edge", 2);
    Demultiplexer demultiplexer;
    EXPECT_FALSE(Init(demultiplexer));
    const Texts configured(kConfigured.begin(), kConfigured.begin() + 4);
    EXPECT_EQ(Writes(board), Together(kClaimed, configured));
}

TEST_F(DemultiplexerInit, MayBeTriedAgain) {
    FailToOpen("C27", "value");
    Demultiplexer demultiplexer;
    EXPECT_FALSE(Init(demultiplexer));
    EXPECT_TRUE(Init(demultiplexer));
    EXPECT_EQ(console.Output(), kInitFailed);
    EXPECT_EQ(console.Error(), kValue);
}

TEST_F(DemultiplexerInit, OnceDoneAnswersTrueThoughALineIsLost) {
    Demultiplexer demultiplexer;
    EXPECT_TRUE(Init(demultiplexer));
    board.FailForever("open", "/sys/class/gpio/pioC31/value", EACCES);
    EXPECT_TRUE(Init(demultiplexer));
    EXPECT_TRUE(demultiplexer.Initialised());
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), kValue);
}

} // namespace
} // namespace tavrelin
