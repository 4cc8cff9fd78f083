#pragma once

#include "tests/devices/FrontEnd.h"

namespace tavrelin {

/// The indicator's lines 1 to 6.
inline constexpr std::array<const char*, 6> kIndicatorLines = {"D16", "D18", "D20",
                                                               "D17", "D19", "D21"};

/// What shows a colour whose levels for lines 1 to 6 are written as "010100".
inline sim::Texts ColourWrites(const std::string& levels) {
    return LevelWrites(kIndicatorLines, levels);
}

/// What claims lines 1 to 6 and makes them outputs.
inline sim::Texts IndicatorSetUpWrites() {
    sim::Texts writes;
    for (const std::string line : kIndicatorLines) {
        writes.push_back("gpio export " + std::to_string(96 + std::stoi(line.substr(1))));
        writes.push_back(line + " direction in");
        writes.push_back(line + " edge none");
    }
    for (const std::string line : kIndicatorLines) {
        writes.push_back(line + " direction out");
        writes.push_back(line + " edge none");
    }
    return writes;
}

} // namespace tavrelin
