#pragma once

#include "simulator/board/Converter.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <vector>

namespace tavrelin {

/// Raw words for the converter to answer with: the ones that stand for these readings.
inline std::vector<std::uint32_t> WordsFor(const std::vector<std::int32_t>& readings) {
    std::vector<std::uint32_t> words;
    std::transform(readings.begin(), readings.end(), std::back_inserter(words),
                   sim::Converter::ResultWord);
    return words;
}

/// The word that says that there is no new result: the command, sent back.
inline constexpr std::uint32_t kNothingNew = 0xA0800000;

} // namespace tavrelin
