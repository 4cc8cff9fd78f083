#include "platform/GpioPin.h"

#include "tests/support/BoardTest.h"

#include <string>

namespace tavrelin {
namespace {

using sim::Texts;

constexpr const char* kDirectory = "/sys/class/gpio/pioB7";
constexpr const char* kValue = "/sys/class/gpio/pioB7/value";

// Line B7 in an instrument's hands; what its construction wrote is forgotten.
class GpioPinB7 : public BoardTest {
  protected:
    GpioPinB7() { board.Forget(); }

    GpioPin pin{1, 7};
};

TEST_F(GpioPinB7, IsAnOutputInModeOneOnly) {
    for (const auto& [mode, text] :
         {std::pair{1U, "direction out"}, std::pair{0U, "direction in"},
          std::pair{2U, "direction in"}, std::pair{7U, "direction in"}}) {
        board.Forget();
        EXPECT_TRUE(pin.SetDirection(mode));
        EXPECT_EQ(pin.Mode(), mode);
        EXPECT_EQ(board.WritesTo("B7"), (Texts{text}));
    }
}

TEST_F(GpioPinB7, SetsEdgesByTheirNames) {
    for (const auto& [edge, text] :
         {std::pair{1U, "edge rising"}, std::pair{2U, "edge falling"}, std::pair{3U, "edge both"},
          std::pair{0U, "edge none"}, std::pair{7U, "edge none"}}) {
        board.Forget();
        EXPECT_TRUE(pin.SetEdge(edge));
        EXPECT_EQ(pin.Edge(), edge);
        EXPECT_EQ(board.WritesTo("B7"), (Texts{text}));
    }
}

TEST_F(GpioPinB7, TakesAnEdgeThatTheKernelRefusesOnAnOutput) {
    pin.SetDirection(kPinOutput);
    board.Forget();
    EXPECT_TRUE(pin.SetEdge(kEdgeBoth));
    EXPECT_EQ(pin.Edge(), kEdgeBoth);
    EXPECT_EQ(board.WritesTo("B7"), (Texts{"edge both EIO"}));
}

TEST_F(GpioPinB7, IsHighForLevelOneAndLowForAnyOther) {
    pin.SetDirection(kPinOutput);
    for (const auto& [level, text] : {std::pair{1U, "value 1"}, std::pair{0U, "value 0"},
                                      std::pair{5U, "value 0"}, std::pair{2U, "value 0"}}) {
        board.Forget();
        EXPECT_TRUE(pin.Write(level));
        EXPECT_EQ(board.WritesTo("B7"), (Texts{text}));
        EXPECT_EQ(board.Line("B7").level, level == 1);
    }
}

TEST_F(GpioPinB7, IsNotWrittenAsAnInput) {
    for (const std::uint32_t mode : {kPinInput, kPinInputWithEdge}) {
        pin.SetDirection(mode);
        const auto calls = board.Calls("access") + board.Calls("open");
        board.Forget();
        EXPECT_FALSE(pin.Write(kLevelHigh));
        EXPECT_EQ(board.Calls("access") + board.Calls("open"), calls);
    }
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(GpioPinB7, ReadsTheLevelAtThePin) {
    EXPECT_EQ(pin.Read(), kLevelLow);
    board.SetInput("B7", true);
    EXPECT_EQ(pin.Read(), kLevelHigh);
    pin.SetDirection(kPinOutput);
    pin.Write(kLevelHigh);
    EXPECT_EQ(pin.Read(), kLevelHigh);
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(GpioPinB7, ReadsHighOnlyForTheWordOne) {
    for (const char* high : {"1", "1\n", " \t1\n", "1 0", "1\n0\n"}) {
        board.ReplaceText(kValue, high);
        EXPECT_EQ(pin.Read(), kLevelHigh) << '"' << high << '"';
    }
    for (const std::string& low :
         {std::string(), std::string("\n"), std::string("0"), std::string("10"), std::string("01"),
          std::string("+1"), std::string("1,"), std::string("high"), std::string("1\0", 2),
          std::string(5000, '1'), std::string("\xff\x31")}) {
        board.ReplaceText(kValue, low);
        EXPECT_EQ(pin.Read(), kLevelLow) << '"' << low << '"';
    }
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(GpioPinB7, ReadsLowInSilenceWhenTheValueCannotBeRead) {
    board.SetInput("B7", true);
    board.Fail("open", kValue, EACCES);
    EXPECT_EQ(pin.Read(), kLevelLow);
    board.Fail("read", kValue, EIO);
    EXPECT_EQ(pin.Read(), kLevelLow);
    EXPECT_EQ(pin.Read(), kLevelHigh);
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(GpioPinB7, FailsAtEveryOperationOnceItIsUnexported) {
    pin.SetDirection(kPinOutput);
    board.Line("B7").exported = false;
    board.Forget();
    EXPECT_FALSE(pin.SetDirection(kPinInput));
    EXPECT_FALSE(pin.SetEdge(kEdgeBoth));
    EXPECT_FALSE(pin.Write(kLevelHigh));
    EXPECT_EQ(pin.Read(), kLevelError);
    EXPECT_EQ(pin.WaitForEdge(10), kLevelError);
    EXPECT_EQ(
        Console(),
        (Said{"",
              "not locked yet\nnot locked yet\nnot locked yet\nnot locked yet\nnot locked yet\n"}));
    EXPECT_EQ(pin.Mode(), kPinOutput);
    EXPECT_EQ(pin.Edge(), kEdgeNone);
    EXPECT_EQ(board.WritesTo("B7"), Texts{});
}

// The reports carry no newline and run together.
TEST_F(GpioPinB7, ReportsAttributesThatCannotBeOpened) {
    pin.SetDirection(kPinOutput);
    for (const char* attribute : {"/direction", "/edge", "/value"}) {
        board.TakeAway(std::string(kDirectory) + attribute);
    }
    board.Forget();
    EXPECT_FALSE(pin.SetDirection(kPinInput));
    EXPECT_FALSE(pin.SetEdge(kEdgeBoth));
    EXPECT_FALSE(pin.Write(kLevelHigh));
    EXPECT_EQ(Console(), (Said{"", "unable to set the gpio mode"
                                   "unable to set the gpio trigger"
                                   "unable to set the gpio value"}));
    EXPECT_EQ(pin.Mode(), kPinOutput);
    EXPECT_EQ(pin.Edge(), kEdgeNone);
    EXPECT_EQ(board.WritesTo("B7"), Texts{});
}

TEST_F(GpioPinB7, DoesNotLookAtWhatAWriteCameTo) {
    pin.SetDirection(kPinOutput);
    board.Fail("write", kValue, EPERM);
    EXPECT_TRUE(pin.Write(kLevelHigh));
    board.Fail("close", kValue, EIO);
    EXPECT_TRUE(pin.Write(kLevelHigh));
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(GpioPinB7, TestsForItsDirectoryBeforeEachOperation) {
    pin.SetDirection(kPinOutput);
    const auto before = board.Calls("access");
    pin.SetEdge(kEdgeNone);
    pin.Write(kLevelHigh);
    EXPECT_EQ(pin.Read(), kLevelHigh);
    EXPECT_EQ(board.Calls("access"), before + 3);
}

TEST_F(GpioPinB7, HoldsNoDescriptorBetweenOperations) {
    pin.SetDirection(kPinOutput);
    pin.SetEdge(kEdgeNone);
    pin.Write(kLevelHigh);
    static_cast<void>(pin.Read());
    board.FailForever("open", std::string(kDirectory) + "/*", EMFILE);
    pin.SetDirection(kPinInput);
    static_cast<void>(pin.Read());
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

} // namespace
} // namespace tavrelin
