#pragma once

#include "simulator/board/Board.h"
#include "simulator/kernel/EventLog.h"
#include "simulator/kernel/OpenFile.h"

#include <linux/spi/spidev.h>
#include <span>
#include <vector>

namespace sim {

/// What the SPI controller keeps between opens of its device.
struct SpiSettings {
    std::uint32_t mode = 0;
    std::uint8_t bitsPerWord = 8;
    static constexpr std::uint32_t kDefaultSpeed = 1'000'000; ///< Hz
    std::uint32_t speed = kDefaultSpeed; ///< a set speed is lost at the last close
    unsigned opens = 0;
};

/// The converter's spidev device. With 16 bits per word the program's buffer holds words in the
/// machine's own byte order, and the wire carries each most significant byte first.
class SpiFile : public OpenFile {
  public:
    static constexpr std::size_t kLargestTransfer = 4096; ///< spidev's bufsiz
    /// The kernel rounds every record of a message up to this before it adds them up (32-bit ARM).
    static constexpr std::size_t kRecordAlignment = 64;

    SpiFile(std::string path, Board& board, SpiSettings& settings, EventLog& events)
        : OpenFile(std::move(path)), board_(board), settings_(settings), events_(events) {
        ++settings_.opens;
    }
    SpiFile(const SpiFile&) = delete;
    SpiFile& operator=(const SpiFile&) = delete;
    ~SpiFile() override;

    long Read(void* buffer, std::size_t size) override;
    long Write(const void* data, std::size_t size) override;
    long Control(unsigned long request, void* argument) override;
    unsigned Mode() const override { return S_IFCHR | 0600U; }

  private:
    long Message(std::size_t recordBytes, spi_ioc_transfer* records);
    void Exchange(const spi_ioc_transfer& record);
    long Setting(unsigned long request, void* argument);
    template <typename Number>
    long Tell(const char* name, std::uint32_t value, void* argument);
    /// Logs a set request, and gives its result.
    long Asked(const char* name, std::uint32_t value, bool accepted);
    long SetMode(const char* name, std::uint32_t mode);
    long SetBits(std::uint8_t bits);
    long SetSpeed(std::uint32_t speed);
    /// The controller takes words of 8 to 16 bits.
    static bool IsWordSize(unsigned bits) { return bits >= 8 && bits <= 16; }
    static long CheckLength(std::size_t size, unsigned bits);

    Board& board_;
    SpiSettings& settings_;
    EventLog& events_;
};

} // namespace sim
