#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tavrelin {

/// A file of value changes (IEEE 1364), read as strictly as the pickiest program reads it.
struct ValueChanges {
    /// Values as they stand in the file, "1", "z", "0.5" or a text, with their microseconds.
    using Values = std::vector<std::pair<std::int64_t, std::string>>;

    std::vector<std::string> problems;        ///< what is wrong with the file, line for line
    std::map<std::string, std::string> notes; ///< "$date", "$timescale": their texts
    std::map<std::string, std::string> types; ///< "pump/flag": "wire 1"
    std::map<std::string, Values> values;     ///< "flag": from the initial value on
    std::int64_t end = 0;

    /// When a wire's level changed, and to which: one that nobody drives counts as low.
    [[nodiscard]] std::vector<std::pair<std::int64_t, bool>> Edges(const std::string& name) const;
    /// When a wire rose, or fell.
    [[nodiscard]] std::vector<std::int64_t> Moments(const std::string& name, bool level) const;
};

ValueChanges ReadValueChanges(const std::string& text);

} // namespace tavrelin
