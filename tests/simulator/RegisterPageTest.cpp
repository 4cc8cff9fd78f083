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

constexpr off_t kPage = 0xFFFFF000;

/// The page as a program maps it; errno instead when that fails.
class MappedPage {
  public:
    MappedPage() : file_("/dev/mem", O_RDWR | O_SYNC) {
        void* page =
            ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, file_.Number(), kPage);
        error_ = page == MAP_FAILED ? errno : 0;
        words_ = page == MAP_FAILED ? nullptr : static_cast<std::uint32_t*>(page);
    }
    MappedPage(const MappedPage&) = delete;
    MappedPage& operator=(const MappedPage&) = delete;
    ~MappedPage() {
        if (words_ != nullptr) {
            ::munmap(words_, 4096);
        }
    }
    int Error() const { return error_; }
    std::uint32_t& At(unsigned offset) { return words_[offset / 4]; }

  private:
    Descriptor file_;
    int error_ = 0;
    std::uint32_t* words_ = nullptr;
};

class RegisterPage : public testing::Test {
  protected:
    SimulatedBoard board;
};

void MakeOutput(const char* number, const char* name) {
    Store(kGpioExport, number);
    Store(LineFile(name, "direction"), "out");
}

TEST_F(RegisterPage, ShowsTheLevelsOfAllFourPorts) {
    board.SetInput("A0", true);
    board.SetInput("B18", false);
    board.SetInput("C5", true);
    board.SetInput("D31", true);
    MappedPage registers;
    EXPECT_EQ(registers.At(0x43C), 1U);
    EXPECT_EQ(registers.At(0x63C), 0U);
    EXPECT_EQ(registers.At(0x83C), 1U << 5U);
    EXPECT_EQ(registers.At(0xA3C), 1U << 31U);
}

TEST_F(RegisterPage, SetsAndClearsOutputsWhenItIsReleased) {
    MakeOutput("39", "B7");
    MakeOutput("40", "B8");
    board.Line("B8").level = true;
    {
        MappedPage registers;
        registers.At(0x630) = 1U << 7U;
        registers.At(0x634) = 1U << 8U;
        EXPECT_FALSE(board.Line("B7").level);
    }
    EXPECT_TRUE(board.Line("B7").level);
    EXPECT_FALSE(board.Line("B8").level);
    const auto events = board.Events();
    EXPECT_EQ(events[events.size() - 2], "write /dev/mem PIOB set 00000080");
    EXPECT_EQ(events.back(), "write /dev/mem PIOB clear 00000100");
}

TEST_F(RegisterPage, LeavesInputsAlone) {
    MappedPage{}.At(0x430) = 1U << 7U;
    EXPECT_FALSE(board.Line("A7").level);
}

TEST_F(RegisterPage, MovesThePumpAsTheLinesDo) {
    Store(kPwmExport, "2");
    Store(ChannelFile(2, "period"), "1000000");
    Store(ChannelFile(2, "duty_cycle"), "500000");
    Store(ChannelFile(2, "enable"), "1");
    MakeOutput("47", "B15");
    EXPECT_TRUE(board.Model().Stirring());
    MappedPage{}.At(0x630) = 1U << 15U;
    EXPECT_FALSE(board.Model().Stirring());
}

TEST_F(RegisterPage, IsRefusedWhenADriverHoldsIt) {
    board.Fail("mmap", "/dev/mem", EPERM);
    EXPECT_EQ(MappedPage().Error(), EPERM);
    EXPECT_EQ(MappedPage().Error(), 0);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

} // namespace
} // namespace tavrelin
