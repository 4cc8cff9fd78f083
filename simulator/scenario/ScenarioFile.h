#pragma once

#include "simulator/run/RunOptions.h"

#include <string>
#include <string_view>
#include <variant>

namespace sim {

/// What is wrong with a scenario: "FILE:LINE: key: what is wrong and what would do".
struct ScenarioError {
    std::string text;
};

/// Reads a scenario in TOML; name stands for the file in errors. Every unknown key and every value
/// out of its range is an error, and so is a path that no call of the program can meet.
std::variant<Scenario, ScenarioError> ParseScenario(std::string_view toml, const std::string& name);
/// The same of a file.
std::variant<Scenario, ScenarioError> ReadScenarioFile(const std::string& path);

} // namespace sim
