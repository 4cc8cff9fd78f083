#include "platform/SpiDevice.h"

#include "tests/support/BoardTest.h"
#include "tests/support/ClosedStandardInput.h"

#include <fcntl.h>

#include <array>
#include <memory>

namespace tavrelin {
namespace {

using sim::Texts;

constexpr const char* kDevice = "/dev/spidev32765.1";

using SpiDeviceOnBoard = BoardTest;

/// What sets a device up, each setting written and read back.
Texts Settings(const std::string& mode, const std::string& bits, const std::string& speed) {
    const std::string call = "ioctl /dev/spidev32765.1 SPI_IOC_";
    return {call + "WR_MODE " + mode,          call + "RD_MODE " + mode,
            call + "WR_BITS_PER_WORD " + bits, call + "RD_BITS_PER_WORD " + bits,
            call + "WR_MAX_SPEED_HZ " + speed, call + "RD_MAX_SPEED_HZ " + speed};
}

TEST_F(SpiDeviceOnBoard, IsSetUpForTheConverter) {
    {
        const SpiDevice device;
        EXPECT_TRUE(device.Ok());
        EXPECT_GE(device.Fd(), 0);
        EXPECT_EQ(device.Mode(), 0);
        EXPECT_EQ(device.BitsPerWord(), 16);
        EXPECT_EQ(device.SpeedHz(), 3000000U);
        EXPECT_EQ(board.Kernel().Held(), 1U);
    }
    EXPECT_EQ(board.Events(), Settings("0", "16", "3000000"));
    EXPECT_EQ(board.Kernel().Held(), 0U);
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(SpiDeviceOnBoard, TakesModeSpeedAndWordSize) {
    const SpiDevice device(kDevice, 3, 500000, 8);
    EXPECT_TRUE(device.Ok());
    EXPECT_EQ(device.Mode(), 3);
    EXPECT_EQ(device.BitsPerWord(), 8);
    EXPECT_EQ(device.SpeedHz(), 500000U);
    EXPECT_EQ(board.Events(), Settings("3", "8", "500000"));
}

TEST_F(SpiDeviceOnBoard, KeepsWhatTheDriverReportsBack) {
    const SpiDevice device(kDevice, 0, 100000000, 0); // 0 bits stand for 8
    EXPECT_TRUE(device.Ok());
    EXPECT_EQ(device.BitsPerWord(), 8);
    EXPECT_EQ(device.SpeedHz(), 100000000U);
}

TEST_F(SpiDeviceOnBoard, StopsAtTheFirstSettingThatFails) {
    constexpr std::array complaints = {
        "Could not set SPIMode (WR)...ioctl fail",
        "Could not set SPIMode (RD)...ioctl fail",
        "Could not set SPI bitsPerWord (WR)...ioctl fail",
        "Could not set SPI bitsPerWord(RD)...ioctl fail",
        "Could not set SPI speed (WR)...ioctl fail",
        "Could not set SPI speed (RD)...ioctl fail",
    };
    for (std::size_t step = 0; step < complaints.size(); ++step) {
        NewBoard();
        board.Fail("ioctl", kDevice, EIO, step + 1);
        const SpiDevice device;
        EXPECT_FALSE(device.Ok());
        EXPECT_EQ(Console(), (Said{"", complaints[step]}));
        EXPECT_EQ(board.Calls("ioctl"), step + 1);
        EXPECT_GE(device.Fd(), 0); // stays open
        EXPECT_EQ(board.Kernel().Held(), 1U);
    }
}

TEST_F(SpiDeviceOnBoard, ReportsSettingsThatTheKernelRefuses) {
    const SpiDevice still(kDevice, 0, 0, 16);
    EXPECT_EQ(console.Error(), "Could not set SPI speed (WR)...ioctl fail");
    const SpiDevice odd(kDevice, 0, 3000000, 17);
    EXPECT_EQ(console.Error(), "Could not set SPI speed (WR)...ioctl fail"
                               "Could not set SPI bitsPerWord (WR)...ioctl fail");
    EXPECT_FALSE(still.Ok() || odd.Ok());
}

TEST_F(SpiDeviceOnBoard, ReportsADeviceThatCannotBeOpened) {
    {
        board.Fail("open", kDevice, ENOENT);
        const SpiDevice device;
        EXPECT_FALSE(device.Ok());
        EXPECT_EQ(device.Fd(), -1);
        EXPECT_EQ(console.Error(), "could not open SPI device");
    }
    EXPECT_EQ(Console(), (Said{"", "could not open SPI deviceCould not close SPI device"}));
    EXPECT_EQ(board.Calls("ioctl") + board.Calls("close"), 0U);
}

TEST_F(SpiDeviceOnBoard, DoesNotCallTheKernelWithoutAnOpenDevice) {
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
    EXPECT_EQ(Console(), (Said{"", "could not open SPI device"}));
    EXPECT_EQ(words, (std::array<std::uint16_t, 2>{0xA080, 0}));
}

TEST_F(SpiDeviceOnBoard, ClosesOnce) {
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
    EXPECT_EQ(Console(), (Said{"", "Could not close SPI deviceCould not close SPI device"}));
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST_F(SpiDeviceOnBoard, ReportsACloseThatFails) {
    auto device = std::make_unique<SpiDevice>();
    board.Fail("close", kDevice, EIO);
    device.reset();
    EXPECT_EQ(Console(), (Said{"", "Could not close SPI device"}));
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

// Its number is that of the next file to be opened.
TEST_F(SpiDeviceOnBoard, ClosesAStrangersFileWhenItIsClosedAgain) {
    SpiDevice device;
    EXPECT_TRUE(device.Close());
    const SpiDevice stranger;
    ASSERT_EQ(stranger.Fd(), device.Fd());
    EXPECT_TRUE(device.Close());
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST_F(SpiDeviceOnBoard, CanBeOpenedAgainAndDoesNotCloseWhatWasOpen) {
    SpiDevice device;
    EXPECT_TRUE(device.Close());
    EXPECT_TRUE(device.Open(kDevice));
    EXPECT_TRUE(device.Ok());
    EXPECT_EQ(board.Calls("ioctl"), 12U);
    EXPECT_EQ(board.Kernel().Held(), 1U);
    EXPECT_TRUE(device.Open(kDevice));
    EXPECT_EQ(board.Kernel().Held(), 2U);
}

// A file of this machine stands in: what is set up on it is refused, but it is open.
TEST_F(SpiDeviceOnBoard, IsNotHandedOnToProgramsThatAreStarted) {
    const SpiDevice device("/dev/null", 0, 3000000, 16);
    EXPECT_EQ(::fcntl(device.Fd(), F_GETFD), FD_CLOEXEC);
}

TEST_F(SpiDeviceOnBoard, MayHaveTheDescriptorZero) {
    {
        const ClosedStandardInput closed; // until the console is looked at, which opens files too
        SpiDevice device("/dev/zero", 0, 3000000, 16);
        EXPECT_EQ(device.Fd(), 0);
        std::array<char, 2> word = {1, 1};
        EXPECT_TRUE(device.Read(word.data(), 2));
        EXPECT_TRUE(device.Write(word.data(), 2));
        EXPECT_FALSE(device.Transfer(word.data(), 2));
        EXPECT_TRUE(device.Close());
    }
    EXPECT_EQ(Console(), (Said{"", "Could not set SPIMode (WR)...ioctl fail"
                                   "Problem transmitting spi data..ioctl"
                                   "Could not close SPI device"}));
}

} // namespace
} // namespace tavrelin
