#pragma once

#include <cstdint>
#include <string>

namespace tavrelin {

/// The optical converter's.
inline constexpr const char* kConverterDevice = "/dev/spidev32765.1";

/// One spidev device. With words of more than 8 bits the kernel takes and gives 16-bit words in the
/// processor's own byte order, most significant bit first on the wire. Takes no lock. Failures show
/// in the result; open, close and a transfer that the driver refuses also write a message to
/// standard error.
class SpiDevice {
  public:
    /// The converter's device: mode 0, 16 bits per word, 3000000 Hz.
    SpiDevice();
    SpiDevice(const std::string& path, std::uint8_t mode, std::uint32_t speedHz,
              std::uint8_t bitsPerWord);
    SpiDevice(const SpiDevice&) = delete;
    SpiDevice& operator=(const SpiDevice&) = delete;
    SpiDevice(SpiDevice&&) = delete;
    SpiDevice& operator=(SpiDevice&&) = delete;
    /// Closes, as Close does.
    ~SpiDevice();

    /// Opens the device and sets mode, word size and speed, each written and read back into the
    /// fields. False at the first step that fails; the descriptor then stays open. One that was
    /// open before is not closed.
    bool Open(const std::string& path);

    /// Closes the descriptor and keeps its number. A second close, the destructor's too, closes
    /// what the number stands for by then: nothing, which fails, or somebody else's file.
    bool Close();

    /// One write or read of `length` bytes, true only when exactly so many moved. None of the four
    /// touches the system after an open that failed.
    [[nodiscard]] bool Write(const void* buffer, std::uint32_t length) const;
    [[nodiscard]] bool Read(void* buffer, std::uint32_t length) const;

    /// Exchanges the buffer in place, one record per word; a rest shorter than a word is not sent.
    [[nodiscard]] bool Transfer(void* buffer, std::uint32_t length) const;
    /// Exchanges the buffer in place as one record.
    [[nodiscard]] bool TransferBlock(void* buffer, std::uint32_t length) const;

    /// Outcome of the last open or close.
    [[nodiscard]] bool Ok() const { return ok_; }
    [[nodiscard]] int Fd() const { return fd_; }
    /// Settings as the driver last reported them.
    [[nodiscard]] std::uint8_t Mode() const { return mode_; }
    [[nodiscard]] std::uint8_t BitsPerWord() const { return bitsPerWord_; }
    [[nodiscard]] std::uint32_t SpeedHz() const { return speedHz_; }

  private:
    bool Control(unsigned long request, void* argument, const char* complaint) const;
    bool Configure();
    bool Exchange(void* buffer, std::uint32_t records, std::uint32_t recordBytes) const;

    std::uint8_t mode_ = 0;
    std::uint8_t bitsPerWord_ = 16;
    std::uint32_t speedHz_ = 3000000;
    int fd_ = -1;
    bool ok_ = false;
};

} // namespace tavrelin
