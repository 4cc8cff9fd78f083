// The trace hook with a body of its own: puts every call among the events of the simulated board,
// so that a test sees where it stands between them.

#include "base/Trace.h"

#include "simulator/run/Simulation.h"

#include <string>

namespace tavrelin {

void Trace(const char* module, const char* operation, int line) {
    if (sim::Simulation* const simulation = sim::Simulation::OfThisThread()) {
        simulation->events.Add("trace", module,
                               std::string(operation) + " " + std::to_string(line));
    }
}

} // namespace tavrelin
