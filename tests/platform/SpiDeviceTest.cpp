#include "platform/SpiDevice.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/CapturedConsole.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <memory>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kDevice = "/dev/spidev32765.1";

TEST(SpiDevice, IsSetUpForTheConverter) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        const SpiDevice device;
        EXPECT_TRUE(device.Ok());
        EXPECT_GE(device.Fd(), 0);
        EXPECT_EQ(device.Mode(), 0);
        EXPECT_EQ(device.BitsPerWord(), 16);
        EXPECT_EQ(device.SpeedHz(), 3000000U);
        EXPECT_EQ(board.Kernel().Held(), 1U);
    }
    EXPECT_EQ(board.Events(), (Texts{
                                  "ioctl /dev/spidev32765.1 SPI_IOC_WR_MODE 0",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_RD_MODE 0",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_WR_BITS_PER_WORD 16",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_RD_BITS_PER_WORD 16",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_WR_MAX_SPEED_HZ 3000000",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_RD_MAX_SPEED_HZ 3000000",
                              }));
    EXPECT_EQ(board.Kernel().Held(), 0U);
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(SpiDevice, TakesModeSpeedAndWordSize) {
    SimulatedBoard board;
    const SpiDevice device(kDevice, 3, 500000, 8);
    EXPECT_TRUE(device.Ok());
    EXPECT_EQ(device.Mode(), 3);
    EXPECT_EQ(device.BitsPerWord(), 8);
    EXPECT_EQ(device.SpeedHz(), 500000U);
    EXPECT_EQ(board.Events(), (Texts{
                                  "ioctl /dev/spidev32765.1 SPI_IOC_WR_MODE 3",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_RD_MODE 3",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_WR_BITS_PER_WORD 8",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_RD_BITS_PER_WORD 8",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_WR_MAX_SPEED_HZ 500000",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_RD_MAX_SPEED_HZ 500000",
                              }));
}

TEST(SpiDevice, KeepsWhatTheDriverReportsBack) {
    SimulatedBoard board;
    const SpiDevice device(kDevice, 0, 100000000, 0); // 0 bits stand for 8
    EXPECT_TRUE(device.Ok());
    EXPECT_EQ(device.BitsPerWord(), 8);
    EXPECT_EQ(device.SpeedHz(), 100000000U);
}

TEST(SpiDevice, StopsAtTheFirstSettingThatFails) {
    constexpr std::array complaints = {
        "Could not set SPIMode (WR)...ioctl fail",
        "Could not set SPIMode (RD)...ioctl fail",
        "Could not set SPI bitsPerWord (WR)...ioctl fail",
        "Could not set SPI bitsPerWord(RD)...ioctl fail",
        "Could not set SPI speed (WR)...ioctl fail",
        "Could not set SPI speed (RD)...ioctl fail",
    };
    for (std::size_t step = 0; step < complaints.size(); ++step) {
        SimulatedBoard board;
        board.Fail("ioctl", kDevice, EIO, step + 1);
        CapturedConsole console;
        const SpiDevice device;
        EXPECT_FALSE(device.Ok());
        EXPECT_EQ(console.Error(), complaints[step]);
        EXPECT_EQ(console.Output(), "");
        EXPECT_EQ(board.Calls("ioctl"), step + 1);
        EXPECT_GE(device.Fd(), 0); // stays open
        EXPECT_EQ(board.Kernel().Held(), 1U);
    }
}

TEST(SpiDevice, ReportsSettingsThatTheKernelRefuses) {
    SimulatedBoard board;
    CapturedConsole console;
    const SpiDevice still(kDevice, 0, 0, 16);
    EXPECT_EQ(console.Error(), "Could not set SPI speed (WR)...ioctl fail");
    const SpiDevice odd(kDevice, 0, 3000000, 12);
    EXPECT_EQ(console.Error(), "Could not set SPI speed (WR)...ioctl fail"
                               "Could not set SPI bitsPerWord (WR)...ioctl fail");
    EXPECT_FALSE(still.Ok() || odd.Ok());
}

TEST(SpiDevice, ReportsADeviceThatCannotBeOpened) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        board.Fail("open", kDevice, ENOENT);
        const SpiDevice device;
        EXPECT_FALSE(device.Ok());
        EXPECT_EQ(device.Fd(), -1);
        EXPECT_EQ(console.Error(), "could not open SPI device");
    }
    EXPECT_EQ(console.Error(), "could not open SPI deviceCould not close SPI device");
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(board.Calls("ioctl") + board.Calls("close"), 0U);
}

TEST(SpiDevice, DoesNotCallTheKernelWithoutAnOpenDevice) {
    SimulatedBoard board;
    CapturedConsole console;
    board.Fail("open", kDevice, ENOENT);
    SpiDevice device;
    std::array<std::uint16_t, 2> words{0xA080, 0};
    errno = 0; // as any call with a bad descriptor would set it
    EXPECT_FALSE(device.Write(words.data(), 2));
    EXPECT_FALSE(device.Read(words.data(), 4));
    EXPECT_FALSE(device.Transfer(words.data(), 4));
    EXPECT_FALSE(device.TransferBlock(words.data(), 4));
    EXPECT_FALSE(device.Read(nullptr, 0));
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "could not open SPI device");
    EXPECT_EQ(words, (std::array<std::uint16_t, 2>{0xA080, 0}));
}

TEST(SpiDevice, ClosesOnce) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        SpiDevice device;
        const int descriptor = device.Fd();
        EXPECT_TRUE(device.Close());
        EXPECT_TRUE(device.Ok());
        EXPECT_EQ(device.Fd(), descriptor); // keeps its number
        EXPECT_EQ(console.Error(), "");
        EXPECT_FALSE(device.Close());
        EXPECT_FALSE(device.Ok());
        EXPECT_EQ(console.Error(), "Could not close SPI device");
    }
    EXPECT_EQ(console.Error(), "Could not close SPI deviceCould not close SPI device");
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(SpiDevice, ReportsACloseThatFails) {
    SimulatedBoard board;
    CapturedConsole console;
    auto device = std::make_unique<SpiDevice>();
    board.Fail("close", kDevice, EIO);
    device.reset();
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "Could not close SPI device");
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(SpiDevice, CanBeOpenedAgainAfterAClose) {
    SimulatedBoard board;
    SpiDevice device;
    EXPECT_TRUE(device.Close());
    EXPECT_TRUE(device.Open(kDevice));
    EXPECT_TRUE(device.Ok());
    EXPECT_EQ(board.Calls("ioctl"), 12U);
    EXPECT_EQ(board.Kernel().Held(), 1U);
}

} // namespace
} // namespace tavrelin
