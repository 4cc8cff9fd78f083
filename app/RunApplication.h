#pragma once

namespace tavrelin {

/// The life of the instrument: creates the devices, primes the pump, finds its start position and
/// runs 200000 steps. Returns when they are done, or at once and silently when the devices could
/// not be created. A failed search, after a priming that worked, or a hardware failure ends the
/// process with status 0.
void RunApplication();

} // namespace tavrelin
