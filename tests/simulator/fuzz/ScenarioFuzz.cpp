// Feeds arbitrary bytes to the reader of scenarios: each is read or refused with its place. Run by
// scripts/fuzz; corpus/ holds what a fresh run begins with.

#include "simulator/scenario/ScenarioFile.h"

#include "tests/support/FuzzInput.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto read =
        sim::ParseScenario(std::string_view(reinterpret_cast<const char*>(data), size), "b");
    if (const auto* error = std::get_if<sim::ScenarioError>(&read)) {
        tavrelin::Hold(error->text.starts_with("b:") &&
                       error->text.find('\n') == std::string::npos);
    }
    return 0;
}
