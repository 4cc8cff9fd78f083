#include "simulator/board/RegisterPage.h"

#include <cstdio>

namespace sim {
namespace {

void driveAll(Lines& lines, unsigned port, std::uint32_t bits, bool level) {
    for (unsigned bit = 0; bit < 32; ++bit) {
        if (((bits >> bit) & 1U) != 0) {
            lines.drive(port * 32 + bit, level);
        }
    }
}

} // namespace

void RegisterPage::load(std::span<std::uint32_t> page) const {
    for (unsigned port = 0; port < 4; ++port) {
        std::uint32_t status = 0;
        for (unsigned bit = 0; bit < 32; ++bit) {
            status |= (lines_.at(port * 32 + bit).level ? 1U : 0U) << bit;
        }
        page[wordOf(port, pinStatus)] = status;
    }
}

std::vector<std::string> RegisterPage::store(std::span<const std::uint32_t> page) {
    std::vector<std::string> told;
    for (unsigned port = 0; port < 4; ++port) {
        for (const bool level : {true, false}) {
            const std::uint32_t bits = page[wordOf(port, level ? setOutput : clearOutput)];
            if (bits != 0) {
                driveAll(lines_, port, bits, level);
                char text[32];
                std::snprintf(text, sizeof text, "PIO%c %s %08x", static_cast<char>('A' + port),
                              level ? "set" : "clear", bits);
                told.emplace_back(text);
            }
        }
    }
    return told;
}

} // namespace sim
