// The converter's spidev device, met with bare system calls.

#include "tests/simulator/RawCalls.h"

#include "simulator/testing/SimulatedBoard.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/spi/spidev.h>
#include <sys/ioctl.h>
#include <vector>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

/// An ioctl's result, or the negated errno.
template <typename Argument>
long Ask(const Descriptor& file, unsigned long request, Argument* argument) {
    const int result = ::ioctl(file.Number(), request, argument);
    return result < 0 ? -errno : result;
}

template <typename Number>
long Set(const Descriptor& file, unsigned long request, Number value) {
    return Ask(file, request, &value);
}

template <typename Number>
Number Get(const Descriptor& file, unsigned long request) {
    Number value{};
    EXPECT_EQ(Ask(file, request, &value), 0);
    return value;
}

/// A board whose converter answers a read with one known word.
class SpiFile : public testing::Test {
  protected:
    SpiFile() : board(Answering(0x11223344)), file(kSpiDevice, O_RDWR) {}

    static sim::Scenario Answering(std::uint32_t word) {
        sim::Scenario scenario;
        scenario.board.converterWords = {word, word};
        return scenario;
    }
    void UseBits(std::uint8_t bits) const {
        EXPECT_EQ(Set(file, SPI_IOC_WR_BITS_PER_WORD, bits), 0);
    }
    std::string ReadFour() const {
        std::string bytes;
        EXPECT_EQ(file.Read(bytes, 4), 4);
        return bytes;
    }

    SimulatedBoard board;
    Descriptor file;
};

TEST_F(SpiFile, SixteenBitWordsLieInMemoryInTheMachinesOrder) {
    UseBits(16);
    EXPECT_EQ(file.Write("\x80\xA0"), 2);
    EXPECT_EQ(board.WritesTo("spi"), (Texts{"a080"}));
    EXPECT_EQ(ReadFour(), "\x22\x11\x44\x33");
}

TEST_F(SpiFile, EightBitWordsPassAsTheyAre) {
    UseBits(8);
    EXPECT_EQ(file.Write("\xA0\x80"), 2);
    EXPECT_EQ(board.WritesTo("spi"), (Texts{"a080"}));
    EXPECT_EQ(ReadFour(), "\x11\x22\x33\x44");
}

TEST_F(SpiFile, SixteenBitWordsComeInPairsOfBytes) {
    UseBits(16);
    std::string text;
    EXPECT_EQ(file.Write("abc"), -EINVAL);
    EXPECT_EQ(file.Read(text, 3), -EINVAL);
    UseBits(8);
    EXPECT_EQ(file.Write("abc"), 3);
}

TEST_F(SpiFile, MovesNoMoreThan4096BytesAtOnce) {
    std::string text;
    EXPECT_EQ(file.Read(text, 4097), -EMSGSIZE);
    EXPECT_EQ(file.Read(text, 4096), 4096);
    EXPECT_EQ(file.Write(std::string(4097, 'x')), -EMSGSIZE);
    EXPECT_EQ(file.Write(std::string(4096, 'x')), 4096);
}

TEST_F(SpiFile, KnowsWordsOfEightToSixteenBits) {
    EXPECT_EQ(Get<std::uint8_t>(file, SPI_IOC_RD_BITS_PER_WORD), 8);
    EXPECT_EQ(Set(file, SPI_IOC_WR_BITS_PER_WORD, std::uint8_t{7}), -EINVAL);
    EXPECT_EQ(Set(file, SPI_IOC_WR_BITS_PER_WORD, std::uint8_t{17}), -EINVAL);
    EXPECT_EQ(Set(file, SPI_IOC_WR_BITS_PER_WORD, std::uint8_t{16}), 0);
    EXPECT_EQ(Get<std::uint8_t>(file, SPI_IOC_RD_BITS_PER_WORD), 16);
    EXPECT_EQ(Set(file, SPI_IOC_WR_BITS_PER_WORD, std::uint8_t{0}), 0) << "0 stands for 8";
    EXPECT_EQ(Get<std::uint8_t>(file, SPI_IOC_RD_BITS_PER_WORD), 8);
}

TEST_F(SpiFile, ASpeedIsNeverZeroAndNeverClamped) {
    EXPECT_EQ(Set(file, SPI_IOC_WR_MAX_SPEED_HZ, 0U), -EINVAL);
    EXPECT_EQ(Set(file, SPI_IOC_WR_MAX_SPEED_HZ, 100'000'000U), 0);
    EXPECT_EQ(Get<std::uint32_t>(file, SPI_IOC_RD_MAX_SPEED_HZ), 100'000'000U);
}

TEST_F(SpiFile, TheSpeedLivesUntilTheLastCloseAndTheWordSizeBeyondIt) {
    Set(file, SPI_IOC_WR_MAX_SPEED_HZ, 3'000'000U);
    UseBits(16);
    EXPECT_EQ(Get<std::uint32_t>(Descriptor(kSpiDevice, O_RDWR), SPI_IOC_RD_MAX_SPEED_HZ),
              3'000'000U);
    file.Close();
    const Descriptor later(kSpiDevice, O_RDWR);
    EXPECT_EQ(Get<std::uint32_t>(later, SPI_IOC_RD_MAX_SPEED_HZ), 1'000'000U);
    EXPECT_EQ(Get<std::uint8_t>(later, SPI_IOC_RD_BITS_PER_WORD), 16);
}

TEST_F(SpiFile, TakesTheModesOfItsController) {
    EXPECT_EQ(Set(file, SPI_IOC_WR_MODE, std::uint8_t{SPI_MODE_3}), 0);
    EXPECT_EQ(Get<std::uint8_t>(file, SPI_IOC_RD_MODE), SPI_MODE_3);
    EXPECT_EQ(Get<std::uint32_t>(file, SPI_IOC_RD_MODE32), std::uint32_t{SPI_MODE_3});
    EXPECT_EQ(Set(file, SPI_IOC_WR_MODE, std::uint8_t{SPI_LOOP}), -EINVAL);
    EXPECT_EQ(Set(file, SPI_IOC_WR_MODE32, std::uint32_t{SPI_TX_QUAD | SPI_MODE_1}), 0);
    EXPECT_EQ(Get<std::uint32_t>(file, SPI_IOC_RD_MODE32), std::uint32_t{SPI_MODE_1})
        << "a wider bus is forgone";
    EXPECT_EQ(Set(file, SPI_IOC_WR_LSB_FIRST, std::uint8_t{1}), -EINVAL);
    EXPECT_EQ(Get<std::uint8_t>(file, SPI_IOC_RD_LSB_FIRST), 0);
    EXPECT_EQ(Ask(file, FIONREAD, &board), -ENOTTY);
}

TEST_F(SpiFile, CannotBeSearched) {
    EXPECT_EQ(file.Seek(0, SEEK_SET), -ESPIPE);
}

/// Records of one message, each of so many bytes.
class Records {
  public:
    Records(std::size_t count, std::size_t bytes) : memory_(count * bytes, '\0'), records_(count) {
        for (std::size_t i = 0; i < count; ++i) {
            records_[i] = {};
            records_[i].tx_buf = reinterpret_cast<std::uintptr_t>(memory_.data() + i * bytes);
            records_[i].rx_buf = records_[i].tx_buf;
            records_[i].len = static_cast<std::uint32_t>(bytes);
        }
    }
    spi_ioc_transfer& operator[](std::size_t i) { return records_[i]; }
    /// The request with the number of records in its size field.
    long Send(const Descriptor& file, std::size_t count) {
        const auto size = count * sizeof(spi_ioc_transfer);
        return Ask(file, _IOC(_IOC_WRITE, SPI_IOC_MAGIC, 0, size), records_.data());
    }

  private:
    std::string memory_;
    std::vector<spi_ioc_transfer> records_;
};

TEST_F(SpiFile, PassesSixtyFourSmallRecordsAndNoMore) {
    UseBits(16);
    Records records(65, 2);
    EXPECT_EQ(records.Send(file, 64), 128);
    EXPECT_EQ(records.Send(file, 65), -EMSGSIZE);
}

TEST_F(SpiFile, AMessageOfNoRecordsMovesNothing) {
    Records records(1, 2);
    EXPECT_EQ(records.Send(file, 0), 0);
    EXPECT_EQ(board.WritesTo("spi"), Texts{});
}

TEST_F(SpiFile, ARecordMayHaveItsOwnWordSize) {
    Records records(1, 3);
    EXPECT_EQ(records.Send(file, 1), 3);
    records[0].bits_per_word = 16;
    EXPECT_EQ(records.Send(file, 1), -EINVAL) << "an odd length";
}

TEST_F(SpiFile, ARecordSendsAndReceivesInPlace) {
    std::string buffer("\xA0\x80\x00\x00", 4);
    spi_ioc_transfer record{};
    record.tx_buf = reinterpret_cast<std::uintptr_t>(buffer.data());
    record.rx_buf = record.tx_buf;
    record.len = 4;
    record.speed_hz = 3'000'000;
    EXPECT_EQ(Ask(file, SPI_IOC_MESSAGE(1), &record), 4);
    EXPECT_EQ(buffer, "\x11\x22\x33\x44");
    EXPECT_EQ(board.Events().back(),
              "transfer /dev/spidev32765.1 a0800000 -> 11223344 8 bits 3000000 Hz");
}

} // namespace
} // namespace tavrelin
