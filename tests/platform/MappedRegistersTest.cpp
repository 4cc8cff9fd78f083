#include "platform/MappedRegisters.h"

#include "platform/GpioPin.h"
#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/CapturedConsole.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kMemory = "/dev/mem";

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

TEST(MappedRegisters, ReadALineOfEachBank) {
    for (const MappedLine& line : kLines) {
        SimulatedBoard board;
        EXPECT_EQ(ReadMappedPin(line.bank, line.bit), kLevelLow) << line.name;
        board.SetInput(line.name, true);
        EXPECT_EQ(ReadMappedPin(line.bank, line.bit), kLevelHigh) << line.name;
    }
}

TEST(MappedRegisters, TellOneLineFromTheOthers) {
    SimulatedBoard board;
    board.SetInput("B7", true);
    for (const auto& [bank, bit] : {std::pair{1U, 6U}, std::pair{1U, 8U}, std::pair{0U, 7U},
                                    std::pair{2U, 7U}, std::pair{1U, 31U}, std::pair{1U, 0U}}) {
        EXPECT_EQ(ReadMappedPin(bank, bit), kLevelLow) << bank << ", " << bit;
    }
}

TEST(MappedRegisters, SetAndClearALineOfEachBank) {
    for (const MappedLine& line : kLines) {
        SimulatedBoard board;
        board.Line(line.name).output = true;
        EXPECT_TRUE(WriteMappedPin(line.bank, line.bit, kLevelHigh));
        EXPECT_TRUE(board.Line(line.name).level) << line.name;
        EXPECT_TRUE(WriteMappedPin(line.bank, line.bit, kLevelLow));
        EXPECT_FALSE(board.Line(line.name).level) << line.name;
        EXPECT_EQ(board.Events(), (Texts{
                                      "mmap /dev/mem 0xfffff000",
                                      std::string("write /dev/mem ") + line.set,
                                      "mmap /dev/mem 0xfffff000",
                                      std::string("write /dev/mem ") + line.clear,
                                  }));
    }
}

TEST(MappedRegisters, DriveHighForLevelOneOnly) {
    SimulatedBoard board;
    board.Line("B7").output = true;
    board.Line("B7").level = true;
    EXPECT_TRUE(WriteMappedPin(1, 7, 5));
    EXPECT_FALSE(board.Line("B7").level);
}

TEST(MappedRegisters, LeaveOtherLinesAlone) {
    SimulatedBoard board;
    for (const char* name : {"B6", "B7", "B8", "A7"}) {
        board.Line(name).output = true;
        board.Line(name).level = true;
    }
    WriteMappedPin(1, 7, kLevelLow);
    EXPECT_TRUE(board.Line("B6").level && board.Line("B8").level && board.Line("A7").level);
    EXPECT_FALSE(board.Line("B7").level);
}

TEST(MappedRegisters, RefuseBit32WithoutTouchingTheMemoryDevice) {
    SimulatedBoard board;
    CapturedConsole console;
    EXPECT_EQ(ReadMappedPin(0, 32), kLevelError);
    EXPECT_FALSE(WriteMappedPin(0, 32, kLevelHigh));
    EXPECT_EQ(board.Calls("open"), 0U);
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(MappedRegisters, ReportAMemoryDeviceThatCannotBeOpened) {
    SimulatedBoard board;
    board.FailForever("open", kMemory, EACCES);
    CapturedConsole console;
    EXPECT_EQ(ReadMappedPin(1, 7), kLevelError);
    EXPECT_EQ(console.Error(), "open of /dev/mem failed\n");
    EXPECT_FALSE(WriteMappedPin(1, 7, kLevelHigh));
    EXPECT_EQ(console.Error(), "open of /dev/mem failed\nopen of /dev/mem failed\n");
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(board.Calls("mmap"), 0U);
}

TEST(MappedRegisters, ReportAPageThatCannotBeMapped) {
    SimulatedBoard board;
    board.FailForever("mmap", kMemory, EPERM);
    CapturedConsole console;
    EXPECT_EQ(ReadMappedPin(1, 7), kLevelError);
    EXPECT_EQ(console.Error(), "mmap failed\n");
    EXPECT_FALSE(WriteMappedPin(1, 7, kLevelHigh));
    EXPECT_EQ(console.Error(), "mmap failed\nmmap failed\n");
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(MappedRegisters, AreMappedAfreshAndReleasedEachTime) {
    SimulatedBoard board;
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
