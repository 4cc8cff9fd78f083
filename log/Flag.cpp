#include "log/Flag.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrelin::daylog {

Flag FlagOf(const Figures& figures) {
    const std::array all{figures.absorbance, figures.chlorine, figures.dark, figures.reference,
                         figures.sample};
    if (std::any_of(all.begin(), all.end(), [](double figure) { return std::isnan(figure); })) {
        return Flag::NotANumber;
    }
    if (std::any_of(all.begin(), all.end(), [](double figure) { return std::isinf(figure); })) {
        return Flag::Infinite;
    }
    if (std::any_of(all.begin() + 2, all.end(),
                    [](double counts) { return std::abs(counts) >= kEndOfRange; })) {
        return Flag::OutOfRange;
    }
    return figures.chlorine < 0.0 ? Flag::Negative : Flag::None;
}

const char* FlagText(Flag flag) {
    switch (flag) {
    case Flag::None:
        break;
    case Flag::NotANumber:
        return "not a number";
    case Flag::Infinite:
        return "infinite";
    case Flag::OutOfRange:
        return "out of the detector's range";
    case Flag::Negative:
        return "negative";
    }
    return "";
}

} // namespace tavrelin::daylog
