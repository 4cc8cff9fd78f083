#include "platform/SpiDevice.h"

#include <fcntl.h>
#include <linux/spi/spidev.h>
#include <sys/ioctl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstddef>
#include <iostream>
#include <vector>

namespace tavrelin {

namespace {

// The request number carries the message's size in 14 bits; a longer message goes with size 0.
constexpr unsigned long MessageRequest(std::size_t records) {
    const std::size_t bytes = records * sizeof(spi_ioc_transfer);
    const std::size_t size = bytes < (1U << _IOC_SIZEBITS) ? bytes : 0;
    return _IOC(_IOC_WRITE, SPI_IOC_MAGIC, 0, size);
}

} // namespace

SpiDevice::SpiDevice() {
    Open(kConverterDevice);
}

SpiDevice::SpiDevice(const std::string& path, std::uint8_t mode, std::uint32_t speedHz,
                     std::uint8_t bitsPerWord)
    : mode_(mode), bitsPerWord_(bitsPerWord), speedHz_(speedHz) {
    Open(path);
}

SpiDevice::~SpiDevice() {
    Close();
}

bool SpiDevice::Open(const std::string& path) {
    // Not for programs that the owner's process may start: the bus is its own.
    fd_ = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (fd_ < 0) {
        std::cerr << "could not open SPI device";
    }
    ok_ = fd_ >= 0 && Configure();
    return ok_;
}

// Each setting is read back, because the driver may have made something else of it.
bool SpiDevice::Configure() {
    return Control(SPI_IOC_WR_MODE, &mode_, "Could not set SPIMode (WR)...ioctl fail") &&
           Control(SPI_IOC_RD_MODE, &mode_, "Could not set SPIMode (RD)...ioctl fail") &&
           Control(SPI_IOC_WR_BITS_PER_WORD, &bitsPerWord_,
                   "Could not set SPI bitsPerWord (WR)...ioctl fail") &&
           Control(SPI_IOC_RD_BITS_PER_WORD, &bitsPerWord_,
                   "Could not set SPI bitsPerWord(RD)...ioctl fail") &&
           Control(SPI_IOC_WR_MAX_SPEED_HZ, &speedHz_,
                   "Could not set SPI speed (WR)...ioctl fail") &&
           Control(SPI_IOC_RD_MAX_SPEED_HZ, &speedHz_, "Could not set SPI speed (RD)...ioctl fail");
}

bool SpiDevice::Close() {
    ok_ = fd_ >= 0 && ::close(fd_) == 0;
    if (!ok_) {
        std::cerr << "Could not close SPI device";
    }
    return ok_;
}

bool SpiDevice::Write(const void* buffer, std::uint32_t length) const {
    return fd_ >= 0 && ::write(fd_, buffer, length) == static_cast<ssize_t>(length);
}

bool SpiDevice::Read(void* buffer, std::uint32_t length) const {
    return fd_ >= 0 && ::read(fd_, buffer, length) == static_cast<ssize_t>(length);
}

bool SpiDevice::Transfer(void* buffer, std::uint32_t length) const {
    // The driver packs words of up to 8 bits into a byte each, longer ones into two.
    const std::uint32_t wordBytes = bitsPerWord_ < 9 ? 1 : 2;
    return Exchange(buffer, length / wordBytes, wordBytes);
}

bool SpiDevice::TransferBlock(void* buffer, std::uint32_t length) const {
    return Exchange(buffer, 1, length);
}

bool SpiDevice::Control(unsigned long request, void* argument, const char* complaint) const {
    if (::ioctl(fd_, request, argument) < 0) {
        std::cerr << complaint;
        return false;
    }
    return true;
}

bool SpiDevice::Exchange(void* buffer, std::uint32_t records, std::uint32_t recordBytes) const {
    if (fd_ < 0) {
        return false;
    }
    std::vector<spi_ioc_transfer> message(records);
    auto word = reinterpret_cast<std::uintptr_t>(buffer);
    for (spi_ioc_transfer& record : message) {
        // In place: the driver has sent a record before it stores what came back.
        record.tx_buf = word;
        record.rx_buf = word;
        record.len = recordBytes;
        record.speed_hz = speedHz_;
        record.bits_per_word = bitsPerWord_;
        word += recordBytes;
    }
    return Control(MessageRequest(records), message.data(), "Problem transmitting spi data..ioctl");
}

} // namespace tavrelin
