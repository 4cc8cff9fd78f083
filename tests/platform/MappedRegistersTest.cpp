#include "platform/MappedRegisters.h"

#include "platform/GpioPin.h"
#include "tests/support/BoardTest.h"

namespace tavrelin {
namespace {

using sim::Texts;

using MappedRegisters = BoardTest;

struct MappedLine {
    std::uint32_t bank, bit;
    const char *name, *set, *clear;
};

constexpr MappedLine kLines[] = {
    {0, 0, "A0", "PIOA set 00000001", "PIOA clear 00000001"},
    {1, 7, "B7", "PIOB set 00000080", "PIOB clear 00000080"},
    {2, 27, "C27", "PIOC set 08000000", "PIOC clear 08000000"},
    {3, 31, "D31", "PIOD set 80000000", "PIOD clear 80000000"},
};

TEST_F(MappedRegisters, ReadALineOfEachBankAndTellItFromTheOthers) {
    for (const MappedLine& line : kLines) {
        board.SetInput(line.name, true);
        for (const MappedLine& other : kLines) {
            EXPECT_EQ(ReadMappedPin(other.bank, other.bit),
                      &other == &line ? kLevelHigh : kLevelLow);
            EXPECT_EQ(ReadMappedPin(other.bank, other.bit ^ 1U), kLevelLow) << other.name;
        }
        board.SetInput(line.name, false);
    }
}

TEST_F(MappedRegisters, SetAndClearALineOfEachBank) {
    for (const MappedLine& line : kLines) {
        board.Forget();
        board.Line(line.name).output = true;
        EXPECT_TRUE(WriteMappedPin(line.bank, line.bit, kLevelHigh));
        EXPECT_TRUE(board.Line(line.name).level) << line.name;
        EXPECT_TRUE(WriteMappedPin(line.bank, line.bit, kLevelLow));
        EXPECT_FALSE(board.Line(line.name).level) << line.name;
        const std::string write = "write /dev/mem ";
        EXPECT_EQ(board.Events(), (Texts{"mmap /dev/mem 0xfffff000", write + line.set,
                                         "mmap /dev/mem 0xfffff000", write + line.clear}));
    }
}

TEST_F(MappedRegisters, DriveHighForLevelOneOnly) {
    board.Line("B7").output = true;
    board.Line("B7").level = true;
    EXPECT_TRUE(WriteMappedPin(1, 7, 5));
    EXPECT_FALSE(board.Line("B7").level);
}

TEST_F(MappedRegisters, LeaveOtherLinesAlone) {
    for (const char* name : {"B6", "B7", "B8", "A7"}) {
        board.Line(name).output = true;
        board.Line(name).level = true;
    }
    WriteMappedPin(1, 7, kLevelLow);
    EXPECT_TRUE(board.Line("B6").level && board.Line("B8").level && board.Line("A7").level);
    EXPECT_FALSE(board.Line("B7").level);
}

TEST_F(MappedRegisters, RefuseBit32WithoutTouchingTheMemoryDevice) {
    EXPECT_EQ(ReadMappedPin(0, 32), kLevelError);
    EXPECT_FALSE(WriteMappedPin(0, 32, kLevelHigh));
    EXPECT_EQ(board.Calls("open"), 0U);
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(MappedRegisters, ReportAMemoryDeviceThatCannotBeOpenedOrMapped) {
    for (const auto& [call, complaint] :
         {std::pair{"open", "open of /dev/mem failed\n"}, std::pair{"mmap", "mmap failed\n"}}) {
        NewBoard();
        board.FailForever(call, "/dev/mem", EACCES);
        EXPECT_EQ(ReadMappedPin(1, 7), kLevelError);
        EXPECT_EQ(Console(), (Said{"", complaint}));
        EXPECT_FALSE(WriteMappedPin(1, 7, kLevelHigh));
        EXPECT_EQ(Console(), (Said{"", std::string(complaint) + complaint}));
        EXPECT_EQ(board.Calls(call), 2U);
        EXPECT_EQ(board.Calls("munmap") + board.Kernel().Held(), 0U);
    }
}

TEST_F(MappedRegisters, AreMappedAfreshAndReleasedEachTime) {
    ReadMappedPin(1, 7);
    WriteMappedPin(1, 7, kLevelHigh);
    ReadMappedPin(1, 7);
    for (const char* call : {"open", "mmap", "munmap", "close"}) {
        EXPECT_EQ(board.Calls(call), 3U) << call;
    }
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

} // namespace
} // namespace tavrelin
