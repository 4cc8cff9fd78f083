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
/// out of its range is an error.
std::variant<Scenario, ScenarioError> parseScenario(std::string_view toml, const std::string& name);
std::variant<Scenario, ScenarioError> readScenarioFile(const std::string& path);

/// The calls that a fault can be set on.
bool isFaultCall(std::string_view call);
/// Their names, separated by ", ".
std::string faultCallNames();

} // namespace sim
