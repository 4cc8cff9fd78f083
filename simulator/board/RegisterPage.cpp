#include "simulator/board/RegisterPage.h"

#include <cstdio>

namespace sim {
namespace {

void DriveAll(Lines& lines, unsigned port, std::uint32_t bits, bool level) {
    for (unsigned bit = 0; bit < 32; ++bit) {
        if (((bits >> bit) & 1U) != 0) {
            lines.Drive(port * 32 + bit, level);
        }
    }
}

} // namespace

void RegisterPage::Load(std::span<std::uint32_t> page) const {
    for (unsigned port = 0; port < 4; ++port) {
        std::uint32_t status = 0;
        for (unsigned bit = 0; bit < 32; ++bit) {
            status |= (lines_.At(port * 32 + bit).level ? 1U : 0U) << bit;
        }
        page[WordOf(port, kPinStatus)] = status;
    }
}

std::vector<std::string> RegisterPage::Store(std::span<const std::uint32_t> page) {
    std::vector<std::string> told;
    for (unsigned port = 0; port < 4; ++port) {
        for (const bool level : {true, false}) {
            const std::uint32_t bits = page[WordOf(port, level ? kSetOutput : kClearOutput)];
            if (bits != 0) {
                DriveAll(lines_, port, bits, level);
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
