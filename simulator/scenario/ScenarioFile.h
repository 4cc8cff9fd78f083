#pragma once

#include "simulator/scenario/Scenario.h"

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
/// The text of a scenario file.
std::variant<std::string, ScenarioError> ReadScenarioText(const std::string& path);

} // namespace sim
