// The controllers' registers through the memory device.

#include "tests/simulator/RawCalls.h"

#include "simulator/testing/SimulatedBoard.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;

constexpr off_t page = 0xFFFFF000;

/// The page as a program maps it; errno instead when that fails.
class MappedPage {
  public:
    MappedPage() : file_("/dev/mem", O_RDWR | O_SYNC) {
        void* address =
            ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, file_.number(), page);
        error_ = address == MAP_FAILED ? errno : 0;
        words_ = address == MAP_FAILED ? nullptr : static_cast<std::uint32_t*>(address);
    }
    MappedPage(const MappedPage&) = delete;
    MappedPage& operator=(const MappedPage&) = delete;
    ~MappedPage() {
        if (words_ != nullptr) {
            ::munmap(words_, 4096);
        }
    }
    int error() const { return error_; }
    std::uint32_t& at(unsigned offset) { return words_[offset / 4]; }

  private:
    Descriptor file_;
    int error_ = 0;
    std::uint32_t* words_ = nullptr;
};

void makeOutput(const char* number, const char* name) {
    store(gpioExport, number);
    store(lineFile(name, "direction"), "out");
}

TEST(RegisterPage, ShowsTheLevelsOfAllFourPorts) {
    SimulatedBoard board;
    board.setInput("A0", true);
    board.setInput("B18", false);
    board.setInput("C5", true);
    board.setInput("D31", true);
    MappedPage registers;
    EXPECT_EQ(registers.at(0x43C), 1U);
    EXPECT_EQ(registers.at(0x63C), 0U);
    EXPECT_EQ(registers.at(0x83C), 1U << 5U);
    EXPECT_EQ(registers.at(0xA3C), 1U << 31U);
}

TEST(RegisterPage, SetsAndClearsOutputsWhenItIsReleased) {
    SimulatedBoard board;
    makeOutput("39", "B7");
    makeOutput("40", "B8");
    board.line("B8").level = true;
    {
        MappedPage registers;
        registers.at(0x630) = 1U << 7U;
        registers.at(0x634) = 1U << 8U;
        EXPECT_FALSE(board.line("B7").level);
    }
    EXPECT_TRUE(board.line("B7").level);
    EXPECT_FALSE(board.line("B8").level);
    const auto events = board.events();
    EXPECT_EQ(events[events.size() - 2], "write /dev/mem PIOB set 00000080");
    EXPECT_EQ(events.back(), "write /dev/mem PIOB clear 00000100");
}

TEST(RegisterPage, LeavesInputsAlone) {
    SimulatedBoard board;
    MappedPage{}.at(0x430) = 1U << 7U;
    EXPECT_FALSE(board.line("A7").level);
}

TEST(RegisterPage, MovesThePumpAsTheLinesDo) {
    SimulatedBoard board;
    store(pwmExport, "2");
    store(channelFile(2, "period"), "1000000");
    store(channelFile(2, "duty_cycle"), "500000");
    store(channelFile(2, "enable"), "1");
    makeOutput("47", "B15");
    EXPECT_TRUE(board.board().stirring());
    MappedPage{}.at(0x630) = 1U << 15U;
    EXPECT_FALSE(board.board().stirring());
}

TEST(RegisterPage, IsRefusedWhenADriverHoldsIt) {
    SimulatedBoard board;
    board.fail("mmap", "/dev/mem", EPERM);
    EXPECT_EQ(MappedPage().error(), EPERM);
    EXPECT_EQ(MappedPage().error(), 0);
    EXPECT_EQ(board.kernel().held(), 0U);
}

} // namespace
} // namespace tavrelin
