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
        EXPECT_TRUE(device.ok());
        EXPECT_GE(device.fd(), 0);
        EXPECT_EQ(device.mode(), 0);
        EXPECT_EQ(device.bitsPerWord(), 16);
        EXPECT_EQ(device.speedHz(), 3000000U);
        EXPECT_EQ(board.kernel().held(), 1U);
    }
    EXPECT_EQ(board.events(), (Texts{
                                  "ioctl /dev/spidev32765.1 SPI_IOC_WR_MODE 0",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_RD_MODE 0",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_WR_BITS_PER_WORD 16",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_RD_BITS_PER_WORD 16",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_WR_MAX_SPEED_HZ 3000000",
                                  "ioctl /dev/spidev32765.1 SPI_IOC_RD_MAX_SPEED_HZ 3000000",
                              }));
    EXPECT_EQ(board.kernel().held(), 0U);
    EXPECT_EQ(console.output() + console.error(), "");
}

TEST(SpiDevice, TakesModeSpeedAndWordSize) {
    SimulatedBoard board;
    const SpiDevice device(kDevice, 3, 500000, 8);
    EXPECT_TRUE(device.ok());
    EXPECT_EQ(device.mode(), 3);
    EXPECT_EQ(device.bitsPerWord(), 8);
    EXPECT_EQ(device.speedHz(), 500000U);
    EXPECT_EQ(board.events(), (Texts{
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
    EXPECT_TRUE(device.ok());
    EXPECT_EQ(device.bitsPerWord(), 8);
    EXPECT_EQ(device.speedHz(), 100000000U);
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
        board.fail("ioctl", kDevice, EIO, step + 1);
        CapturedConsole console;
        const SpiDevice device;
        EXPECT_FALSE(device.ok());
        EXPECT_EQ(console.error(), complaints[step]);
        EXPECT_EQ(console.output(), "");
        EXPECT_EQ(board.calls("ioctl"), step + 1);
        EXPECT_GE(device.fd(), 0); // stays open
        EXPECT_EQ(board.kernel().held(), 1U);
    }
}

TEST(SpiDevice, ReportsSettingsThatTheKernelRefuses) {
    SimulatedBoard board;
    CapturedConsole console;
    const SpiDevice still(kDevice, 0, 0, 16);
    EXPECT_EQ(console.error(), "Could not set SPI speed (WR)...ioctl fail");
    const SpiDevice odd(kDevice, 0, 3000000, 12);
    EXPECT_EQ(console.error(), "Could not set SPI speed (WR)...ioctl fail"
                               "Could not set SPI bitsPerWord (WR)...ioctl fail");
    EXPECT_FALSE(still.ok() || odd.ok());
}

TEST(SpiDevice, ReportsADeviceThatCannotBeOpened) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        board.fail("open", kDevice, ENOENT);
        const SpiDevice device;
        EXPECT_FALSE(device.ok());
        EXPECT_EQ(device.fd(), -1);
        EXPECT_EQ(console.error(), "could not open SPI device");
    }
    EXPECT_EQ(console.error(), "could not open SPI deviceCould not close SPI device");
    EXPECT_EQ(console.output(), "");
    EXPECT_EQ(board.calls("ioctl") + board.calls("close"), 0U);
}

TEST(SpiDevice, DoesNotCallTheKernelWithoutAnOpenDevice) {
    SimulatedBoard board;
    CapturedConsole console;
    board.fail("open", kDevice, ENOENT);
    SpiDevice device;
    std::array<std::uint16_t, 2> words{0xA080, 0};
    errno = 0; // as any call with a bad descriptor would set it
    EXPECT_FALSE(device.Write(words.data(), 2));
    EXPECT_FALSE(device.Read(words.data(), 4));
    EXPECT_FALSE(device.Transfer(words.data(), 4));
    EXPECT_FALSE(device.TransferBlock(words.data(), 4));
    EXPECT_FALSE(device.Read(nullptr, 0));
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(console.output(), "");
    EXPECT_EQ(console.error(), "could not open SPI device");
    EXPECT_EQ(words, (std::array<std::uint16_t, 2>{0xA080, 0}));
}

TEST(SpiDevice, ClosesOnce) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        SpiDevice device;
        const int descriptor = device.fd();
        EXPECT_TRUE(device.Close());
        EXPECT_TRUE(device.ok());
        EXPECT_EQ(device.fd(), descriptor); // keeps its number
        EXPECT_EQ(console.error(), "");
        EXPECT_FALSE(device.Close());
        EXPECT_FALSE(device.ok());
        EXPECT_EQ(console.error(), "Could not close SPI device");
    }
    EXPECT_EQ(console.error(), "Could not close SPI deviceCould not close SPI device");
    EXPECT_EQ(console.output(), "");
    EXPECT_EQ(board.kernel().held(), 0U);
}

TEST(SpiDevice, ReportsACloseThatFails) {
    SimulatedBoard board;
    CapturedConsole console;
    auto device = std::make_unique<SpiDevice>();
    board.fail("close", kDevice, EIO);
    device.reset();
    EXPECT_EQ(console.output(), "");
    EXPECT_EQ(console.error(), "Could not close SPI device");
    EXPECT_EQ(board.kernel().held(), 0U);
}

TEST(SpiDevice, CanBeOpenedAgainAfterAClose) {
    SimulatedBoard board;
    SpiDevice device;
    EXPECT_TRUE(device.Close());
    EXPECT_TRUE(device.Open(kDevice));
    EXPECT_TRUE(device.ok());
    EXPECT_EQ(board.calls("ioctl"), 12U);
    EXPECT_EQ(board.kernel().held(), 1U);
}

} // namespace
} // namespace tavrelin
