#pragma once

#include "log/CivilTime.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace tavrelin::daylog {

/// The figures of a result record, as it shows them: absorbance, chlorine in the calibration's
/// unit, and the three averages in counts. Each may be NaN or infinite.
struct Figures {
    double absorbance = 0.0;
    double chlorine = 0.0;
    double dark = 0.0;
    double reference = 0.0;
    double sample = 0.0;
};

/// What was read from a day's file. Each line gives exactly one entry that is not recovered; a torn
/// line may give a recovered record as well. Texts live until the visit of the entry ends.
struct Entry {
    enum class Kind : std::uint8_t {
        Result,  ///< time and figures
        Sample,  ///< time, reading and step
        Torn,    ///< a piece of a record, or records that run into each other: text
        Unknown, ///< anything else: text
    };

    Kind kind = Kind::Unknown;
    bool recovered = false; ///< a whole record from torn lines, which are told as well
    CivilSeconds time = 0;
    Figures figures;
    std::int64_t reading = 0; ///< counts
    std::string_view step;    ///< its description
    std::string_view text;    ///< the line without its end, at most LineParser::kLongestLine of it
    std::uint64_t line = 0;   ///< its number in the file, from 1

    [[nodiscard]] bool IsRecord() const { return kind == Kind::Result || kind == Kind::Sample; }
};

/// Called for each entry, with the name of its file.
using Visit = std::function<void(const Entry& entry, const std::string& file)>;

} // namespace tavrelin::daylog
