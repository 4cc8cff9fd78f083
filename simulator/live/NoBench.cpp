// The bench of a `simulate` that was built without a library for servers, as for the boards.

#include "simulator/live/Bench.h"

namespace sim {

class Bench::Server {};

Bench::Bench(const BenchSetup& /*setup*/) : problem_("--serve: this simulate has no live bench") {}
Bench::~Bench() = default;

std::string Bench::Address() const {
    return {};
}

void Bench::Start() {}
void Bench::End(const std::string& /*reason*/) {}

} // namespace sim
