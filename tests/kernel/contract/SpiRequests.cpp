#include "tests/kernel/contract/Answers.h"

#include <cstdint>
#include <linux/spi/spidev.h>
#include <sys/ioctl.h>

namespace contract {
namespace {

struct Request {
    std::string_view name;
    unsigned long number;
};

constexpr std::array kRequests{
    Request{"RD_MODE", SPI_IOC_RD_MODE},           Request{"WR_MODE", SPI_IOC_WR_MODE},
    Request{"RD_MODE32", SPI_IOC_RD_MODE32},       Request{"WR_MODE32", SPI_IOC_WR_MODE32},
    Request{"RD_LSB_FIRST", SPI_IOC_RD_LSB_FIRST}, Request{"WR_LSB_FIRST", SPI_IOC_WR_LSB_FIRST},
    Request{"RD_BITS", SPI_IOC_RD_BITS_PER_WORD},  Request{"WR_BITS", SPI_IOC_WR_BITS_PER_WORD},
    Request{"RD_SPEED", SPI_IOC_RD_MAX_SPEED_HZ},  Request{"WR_SPEED", SPI_IOC_WR_MAX_SPEED_HZ},
};

std::uint64_t Address(const std::vector<char>& buffer) {
    return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(buffer.data()));
}

} // namespace

std::string SpiRequest(int descriptor, const std::string& request, const std::string& value) {
    unsigned long number = std::strtoul(request.c_str(), nullptr, 0);
    for (const Request& known : kRequests) {
        number = known.name == request ? known.number : number;
    }
    // A request of one byte takes the lowest: the board and the machine it is simulated on both
    // have that one first.
    std::uint32_t argument = static_cast<std::uint32_t>(std::strtoul(value.c_str(), nullptr, 0));
    const int result = ioctl(descriptor, number, &argument);
    return request.starts_with("RD") && result >= 0 ? std::to_string(argument) : Outcome(result);
}

std::string SpiMessage(int descriptor, const Words& records) {
    std::vector<spi_ioc_transfer> transfers;
    std::vector<char> sent(70'000);
    std::vector<char> received(70'000);
    unsigned long bytes = 0;
    bool sized = false;
    for (std::size_t i = 0; i < records.size(); ++i) {
        const std::string& word = records[i];
        if (word == "x") {
            const std::size_t count = std::strtoul(records[++i].c_str(), nullptr, 10);
            while (transfers.size() < count) {
                transfers.push_back(transfers.back());
            }
        } else if (word == "size") {
            bytes = std::strtoul(records[++i].c_str(), nullptr, 10);
            sized = true;
        } else {
            spi_ioc_transfer transfer{};
            const std::size_t colon = word.find(':');
            const std::string_view kind = std::string_view(word).substr(0, colon);
            char* end = nullptr;
            transfer.len =
                static_cast<std::uint32_t>(std::strtoul(word.c_str() + colon + 1, &end, 10));
            transfer.bits_per_word =
                *end == '/' ? static_cast<std::uint8_t>(std::strtoul(end + 1, nullptr, 10)) : 0;
            transfer.tx_buf = kind == "tx" || kind == "both" ? Address(sent) : 0;
            transfer.rx_buf = kind == "rx" || kind == "both" ? Address(received) : 0;
            transfers.push_back(transfer);
        }
    }
    if (!sized) {
        bytes = transfers.size() * sizeof(spi_ioc_transfer);
    }
    return Amount(ioctl(descriptor, _IOC(_IOC_WRITE, SPI_IOC_MAGIC, 0, bytes), transfers.data()));
}

} // namespace contract
