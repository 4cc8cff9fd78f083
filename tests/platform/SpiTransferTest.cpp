#include "platform/SpiDevice.h"

#include "tests/support/BoardTest.h"

#include <array>
#include <numeric>
#include <vector>

namespace tavrelin {
namespace {

using sim::Texts;

constexpr const char* kDevice = "/dev/spidev32765.1";
constexpr const char* kTransferFailed = "Problem transmitting spi data..ioctl";

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;

// The converter answers with these words, 32 bits each, one after the other.
class SpiTransfer : public BoardTest {
  protected:
    SpiTransfer() {
        board.Model().converter.AnswerWith(
            {0x11223344, 0x55667788, 0x99AABBCC, 0xDDEEFF00, 0x12345678});
    }
};

TEST_F(SpiTransfer, SendsTheMostSignificantByteOfAWordFirst) {
    const SpiDevice device;
    const std::uint16_t command = 0xA080;
    EXPECT_TRUE(device.Write(&command, 2));
    EXPECT_EQ(board.WritesTo("spi"), (Texts{"a080"}));
}

TEST_F(SpiTransfer, ReceivesTheMostSignificantByteOfAWordFirst) {
    const SpiDevice device;
    Words words(2);
    EXPECT_TRUE(device.Read(words.data(), 4));
    EXPECT_EQ(words, (Words{0x1122, 0x3344}));
}

TEST_F(SpiTransfer, LeavesTheOrderOfBytesAlone) {
    const SpiDevice device(kDevice, 0, 3000000, 8);
    const Bytes command = {0xA0, 0x80, 0x01};
    EXPECT_TRUE(device.Write(command.data(), 3));
    EXPECT_EQ(board.WritesTo("spi"), (Texts{"a08001"}));
    Bytes result(4);
    EXPECT_TRUE(device.Read(result.data(), 4));
    EXPECT_EQ(result, (Bytes{0x11, 0x22, 0x33, 0x44}));
}

TEST_F(SpiTransfer, IsOneCallEach) {
    const SpiDevice device;
    Words words(2);
    EXPECT_TRUE(device.Write(words.data(), 4));
    EXPECT_TRUE(device.Read(words.data(), 4));
    EXPECT_TRUE(device.Write(words.data(), 0));
    EXPECT_EQ(board.Calls("write"), 2U);
    EXPECT_EQ(board.Calls("read"), 1U);
    EXPECT_EQ(board.Calls("ioctl"), 6U); // of the set-up
}

TEST_F(SpiTransfer, FailsInSilenceWhenNotAllBytesMove) {
    const SpiDevice device;
    Words words(2049);
    board.CutShort("write", kDevice, 2);
    EXPECT_FALSE(device.Write(words.data(), 4));
    board.CutShort("read", kDevice, 2);
    EXPECT_FALSE(device.Read(words.data(), 4));
    board.Fail("write", kDevice, EIO);
    EXPECT_FALSE(device.Write(words.data(), 4));
    board.Fail("read", kDevice, EIO);
    EXPECT_FALSE(device.Read(words.data(), 4));
    EXPECT_FALSE(device.Write(words.data(), 3));   // half a word
    EXPECT_FALSE(device.Read(words.data(), 4098)); // more than the driver takes
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(SpiTransfer, ExchangesBytesOneByOne) {
    SpiDevice device(kDevice, 0, 500000, 8);
    board.Forget();
    Bytes bytes = {1, 2, 3, 4, 5};
    EXPECT_TRUE(device.Transfer(bytes.data(), 5));
    EXPECT_EQ(board.Events(), (Texts{"transfer /dev/spidev32765.1 01 -> 11 8 bits 500000 Hz",
                                     "transfer /dev/spidev32765.1 02 -> 55 8 bits 500000 Hz",
                                     "transfer /dev/spidev32765.1 03 -> 99 8 bits 500000 Hz",
                                     "transfer /dev/spidev32765.1 04 -> dd 8 bits 500000 Hz",
                                     "transfer /dev/spidev32765.1 05 -> 12 8 bits 500000 Hz"}));
    EXPECT_EQ(bytes, (Bytes{0x11, 0x55, 0x99, 0xDD, 0x12}));
    EXPECT_EQ(board.Calls("ioctl"), 7U);
}

TEST_F(SpiTransfer, ExchangesWholeWordsAndLeavesTheRest) {
    SpiDevice device;
    board.Forget();
    Words words = {0x0102, 0x0304, 0x0506};
    EXPECT_TRUE(device.Transfer(words.data(), 5));
    EXPECT_EQ(board.Events(),
              (Texts{"transfer /dev/spidev32765.1 0102 -> 1122 16 bits 3000000 Hz",
                     "transfer /dev/spidev32765.1 0304 -> 5566 16 bits 3000000 Hz"}));
    EXPECT_EQ(words, (Words{0x1122, 0x5566, 0x0506}));
    EXPECT_EQ(board.Calls("ioctl"), 7U);
}

TEST_F(SpiTransfer, TakesTwoBytesForAWordOfNineBits) {
    SpiDevice device(kDevice, 0, 500000, 9);
    board.Forget();
    Words words = {0x0102, 0x0304};
    EXPECT_TRUE(device.Transfer(words.data(), 4));
    EXPECT_EQ(board.Events(), (Texts{"transfer /dev/spidev32765.1 0102 -> 1122 9 bits 500000 Hz",
                                     "transfer /dev/spidev32765.1 0304 -> 5566 9 bits 500000 Hz"}));
}

TEST_F(SpiTransfer, ExchangesNothingForLessThanAWord) {
    SpiDevice device;
    board.Forget();
    Words words = {0x0102};
    EXPECT_TRUE(device.Transfer(words.data(), 1));
    EXPECT_TRUE(device.Transfer(words.data(), 0));
    const char* nothing = "ioctl /dev/spidev32765.1 SPI_IOC_MESSAGE of no records";
    EXPECT_EQ(board.Events(), (Texts{nothing, nothing}));
    EXPECT_EQ(words, (Words{0x0102}));
}

TEST_F(SpiTransfer, ReportsAMessageThatTheDriverRefuses) {
    SpiDevice device;
    Words words(65);
    EXPECT_TRUE(device.Transfer(words.data(), 128));
    EXPECT_EQ(console.Error(), "");
    EXPECT_FALSE(device.Transfer(words.data(), 130)); // 65 records are too many
    EXPECT_EQ(Console(), (Said{"", kTransferFailed}));
}

// A request has 14 bits for the size of its records. 511 records of 32 bytes fit; 512 do not, and
// go with size 0, which the driver takes for a message of no records.
TEST_F(SpiTransfer, MovesNothingWhenItsRecordsDoNotFitTheRequest) {
    SpiDevice device;
    Words words(600);
    std::iota(words.begin(), words.end(), std::uint16_t{0});
    const Words sent = words;
    board.Forget();
    EXPECT_FALSE(device.Transfer(words.data(), 511 * 2));
    EXPECT_TRUE(device.Transfer(words.data(), 512 * 2));
    EXPECT_TRUE(device.Transfer(words.data(), 600 * 2));
    EXPECT_EQ(board.Events(), (Texts{"ioctl /dev/spidev32765.1 SPI_IOC_MESSAGE EMSGSIZE",
                                     "ioctl /dev/spidev32765.1 SPI_IOC_MESSAGE of no records",
                                     "ioctl /dev/spidev32765.1 SPI_IOC_MESSAGE of no records"}));
    EXPECT_EQ(words, sent);
    EXPECT_EQ(console.Error(), kTransferFailed);
}

TEST_F(SpiTransfer, ExchangesABlockInOneRecord) {
    SpiDevice device;
    board.Forget();
    Words words = {0x0102, 0x0304};
    EXPECT_TRUE(device.TransferBlock(words.data(), 4));
    EXPECT_EQ(board.Events(),
              (Texts{"transfer /dev/spidev32765.1 01020304 -> 11223344 16 bits 3000000 Hz"}));
    EXPECT_EQ(words, (Words{0x1122, 0x3344}));
}

TEST_F(SpiTransfer, ExchangesABlockOfAWholeBuffer) {
    SpiDevice device(kDevice, 0, 500000, 8);
    board.Forget();
    Bytes bytes(4097);
    EXPECT_TRUE(device.TransferBlock(bytes.data(), 4096));
    EXPECT_EQ(board.Events().size(), 1U);
    EXPECT_FALSE(device.TransferBlock(bytes.data(), 4097));
    EXPECT_EQ(console.Error(), kTransferFailed);
}

TEST_F(SpiTransfer, ReportsABlockThatFails) {
    SpiDevice device;
    Words words = {0x0102, 0x0304};
    EXPECT_FALSE(device.TransferBlock(words.data(), 3)); // half a word
    EXPECT_EQ(console.Error(), kTransferFailed);
    board.Fail("ioctl", kDevice, EIO);
    EXPECT_FALSE(device.TransferBlock(words.data(), 4));
    EXPECT_EQ(Console(), (Said{"", std::string(kTransferFailed) + kTransferFailed}));
    EXPECT_EQ(words, (Words{0x0102, 0x0304}));
}

} // namespace
} // namespace tavrelin
