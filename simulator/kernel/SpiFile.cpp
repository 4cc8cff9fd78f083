#include "simulator/kernel/SpiFile.h"

#include "simulator/kernel/ErrnoNames.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace sim {
namespace {

std::string Hex(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text.empty() ? "-" : text;
}

/// Turns a buffer of words into wire order or back; the two are the same swap.
void SwapWords(std::span<std::uint8_t> bytes, unsigned bits) {
    if (bits <= 8 || std::endian::native == std::endian::big) {
        return;
    }
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        std::swap(bytes[i], bytes[i + 1]);
    }
}

std::vector<std::uint8_t> CopyOf(const void* data, std::size_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    return {bytes, bytes + size};
}

} // namespace

SpiFile::~SpiFile() {
    if (--settings_.opens == 0) {
        settings_.speed = SpiSettings::kDefaultSpeed;
    }
}

long SpiFile::CheckLength(std::size_t size, unsigned bits) {
    if (size > kLargestTransfer) {
        return -EMSGSIZE;
    }
    return bits > 8 && size % 2 != 0 ? -EINVAL : 0;
}

long SpiFile::Read(void* buffer, std::size_t size) {
    if (const long error = CheckLength(size, settings_.bitsPerWord); error != 0) {
        events_.Add("read", Path(), Outcome(error));
        return error;
    }
    std::vector<std::uint8_t> wire(size);
    board_.converter.Send(board_.Now(), wire);
    events_.Add("read", Path(), [&] { return Hex(wire); });
    SwapWords(wire, settings_.bitsPerWord);
    std::memcpy(buffer, wire.data(), size);
    return static_cast<long>(size);
}

long SpiFile::Write(const void* data, std::size_t size) {
    if (const long error = CheckLength(size, settings_.bitsPerWord); error != 0) {
        events_.Add("write", Path(), Outcome(error));
        return error;
    }
    std::vector<std::uint8_t> wire = CopyOf(data, size);
    SwapWords(wire, settings_.bitsPerWord);
    events_.Add("write", Path(), [&] { return Hex(wire); });
    board_.converter.Receive(board_.Now(), wire);
    return static_cast<long>(size);
}

long SpiFile::Control(unsigned long request, void* argument) {
    if (_IOC_TYPE(request) != SPI_IOC_MAGIC) {
        return -ENOTTY;
    }
    if (_IOC_NR(request) == _IOC_NR(SPI_IOC_MESSAGE(1)) && _IOC_DIR(request) == _IOC_WRITE) {
        return Message(_IOC_SIZE(request), static_cast<spi_ioc_transfer*>(argument));
    }
    return Setting(request, argument);
}

long SpiFile::Message(std::size_t recordBytes, spi_ioc_transfer* records) {
    const std::size_t count = recordBytes / sizeof(spi_ioc_transfer);
    if (recordBytes % sizeof(spi_ioc_transfer) != 0) {
        return -EINVAL;
    }
    std::size_t sent = 0;
    std::size_t received = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const spi_ioc_transfer& record = records[i];
        const std::size_t rounded =
            (record.len + kRecordAlignment - 1) / kRecordAlignment * kRecordAlignment;
        sent += record.tx_buf != 0 ? rounded : 0;
        received += record.rx_buf != 0 ? rounded : 0;
        const unsigned bits =
            record.bits_per_word != 0 ? record.bits_per_word : settings_.bitsPerWord;
        const long error = std::max(sent, received) > kLargestTransfer ? -EMSGSIZE
                           : IsWordSize(bits) ? CheckLength(record.len, bits)
                                              : -EINVAL;
        if (error != 0) {
            events_.Add("ioctl", Path(), "SPI_IOC_MESSAGE " + Outcome(error));
            return error;
        }
    }
    long moved = 0;
    for (std::size_t i = 0; i < count; ++i) {
        Exchange(records[i]);
        moved += static_cast<long>(records[i].len);
    }
    if (count == 0) {
        events_.Add("ioctl", Path(), "SPI_IOC_MESSAGE of no records");
    }
    return moved;
}

void SpiFile::Exchange(const spi_ioc_transfer& record) {
    const unsigned bits = record.bits_per_word != 0 ? record.bits_per_word : settings_.bitsPerWord;
    const auto* sent = reinterpret_cast<const void*>(static_cast<std::uintptr_t>(record.tx_buf));
    auto* received = reinterpret_cast<void*>(static_cast<std::uintptr_t>(record.rx_buf));
    std::vector<std::uint8_t> out(record.len);
    if (sent != nullptr) {
        out = CopyOf(sent, record.len);
        SwapWords(out, bits);
    }
    std::vector<std::uint8_t> in(record.len);
    board_.converter.Send(board_.Now(), in);
    if (sent != nullptr) {
        board_.converter.Receive(board_.Now(), out);
    }
    events_.Add("transfer", Path(),
                Hex(out) + " -> " + Hex(in) + " " + std::to_string(bits) + " bits " +
                    std::to_string(record.speed_hz != 0 ? record.speed_hz : settings_.speed) +
                    " Hz" + (record.delay_usecs != 0 ? " delayed" : "") +
                    (record.cs_change != 0 ? " deselected" : ""));
    if (received != nullptr) {
        SwapWords(in, bits);
        std::memcpy(received, in.data(), in.size());
    }
}

} // namespace sim
