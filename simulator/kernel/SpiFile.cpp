#include "simulator/kernel/SpiFile.h"

#include "simulator/scenario/ErrnoNames.h"

#include <bit>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace sim {
namespace {

std::string hex(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text.empty() ? "-" : text;
}

/// Turns a buffer of words into wire order or back; the two are the same swap.
void swapWords(std::span<std::uint8_t> bytes, unsigned bits) {
    if (bits <= 8 || std::endian::native == std::endian::big) {
        return;
    }
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        std::swap(bytes[i], bytes[i + 1]);
    }
}

std::vector<std::uint8_t> copyOf(const void* data, std::size_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    return {bytes, bytes + size};
}

} // namespace

SpiFile::~SpiFile() {
    if (--settings_.opens == 0) {
        settings_.speed = SpiSettings::defaultSpeed;
    }
}

long SpiFile::checkLength(std::size_t size, unsigned bits) {
    if (size > largestTransfer) {
        return -EMSGSIZE;
    }
    return bits > 8 && size % 2 != 0 ? -EINVAL : 0;
}

long SpiFile::read(void* buffer, std::size_t size) {
    if (const long error = checkLength(size, settings_.bitsPerWord); error != 0) {
        events_.add("read", path(), errnoName(static_cast<int>(-error)));
        return error;
    }
    std::vector<std::uint8_t> wire(size);
    board_.converter.send(board_.now(), wire);
    events_.add("read", path(), hex(wire));
    swapWords(wire, settings_.bitsPerWord);
    std::memcpy(buffer, wire.data(), size);
    return static_cast<long>(size);
}

long SpiFile::write(const void* data, std::size_t size) {
    if (const long error = checkLength(size, settings_.bitsPerWord); error != 0) {
        events_.add("write", path(), errnoName(static_cast<int>(-error)));
        return error;
    }
    std::vector<std::uint8_t> wire = copyOf(data, size);
    swapWords(wire, settings_.bitsPerWord);
    events_.add("write", path(), hex(wire));
    board_.converter.receive(board_.now(), wire);
    return static_cast<long>(size);
}

long SpiFile::control(unsigned long request, void* argument) {
    if (_IOC_TYPE(request) != SPI_IOC_MAGIC) {
        return -ENOTTY;
    }
    if (_IOC_NR(request) == _IOC_NR(SPI_IOC_MESSAGE(1)) && _IOC_DIR(request) == _IOC_WRITE) {
        return message(_IOC_SIZE(request), static_cast<spi_ioc_transfer*>(argument));
    }
    return setting(request, argument);
}

long SpiFile::message(std::size_t recordBytes, spi_ioc_transfer* records) {
    const std::size_t count = recordBytes / sizeof(spi_ioc_transfer);
    if (recordBytes % sizeof(spi_ioc_transfer) != 0) {
        return -EINVAL;
    }
    std::size_t rounded = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned bits =
            records[i].bits_per_word != 0 ? records[i].bits_per_word : settings_.bitsPerWord;
        rounded += (records[i].len + recordAlignment - 1) / recordAlignment * recordAlignment;
        const long error =
            rounded > largestTransfer ? -EMSGSIZE : checkLength(records[i].len, bits);
        if (error != 0) {
            events_.add("ioctl", path(), "SPI_IOC_MESSAGE " + errnoName(static_cast<int>(-error)));
            return error;
        }
    }
    long moved = 0;
    for (std::size_t i = 0; i < count; ++i) {
        exchange(records[i]);
        moved += static_cast<long>(records[i].len);
    }
    if (count == 0) {
        events_.add("ioctl", path(), "SPI_IOC_MESSAGE of no records");
    }
    return moved;
}

void SpiFile::exchange(const spi_ioc_transfer& record) {
    const unsigned bits = record.bits_per_word != 0 ? record.bits_per_word : settings_.bitsPerWord;
    const auto* sent = reinterpret_cast<const void*>(static_cast<std::uintptr_t>(record.tx_buf));
    auto* received = reinterpret_cast<void*>(static_cast<std::uintptr_t>(record.rx_buf));
    std::vector<std::uint8_t> out(record.len);
    if (sent != nullptr) {
        out = copyOf(sent, record.len);
        swapWords(out, bits);
    }
    std::vector<std::uint8_t> in(record.len);
    board_.converter.send(board_.now(), in);
    if (sent != nullptr) {
        board_.converter.receive(board_.now(), out);
    }
    events_.add("transfer", path(),
                hex(out) + " -> " + hex(in) + " " + std::to_string(bits) + " bits " +
                    std::to_string(record.speed_hz != 0 ? record.speed_hz : settings_.speed) +
                    " Hz" + (record.delay_usecs != 0 ? " delayed" : "") +
                    (record.cs_change != 0 ? " deselected" : ""));
    if (received != nullptr) {
        swapWords(in, bits);
        std::memcpy(received, in.data(), in.size());
    }
}

} // namespace sim
