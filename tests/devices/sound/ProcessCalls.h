#pragma once

namespace tavrelin {

/// From now on the pauses of this process and of its children that no simulated board answers are
/// not waited for: each writes its microseconds as a line to the descriptor. A negative one: as
/// ever.
void RecordPausesTo(int descriptor);

/// This process's next waits for a child are interrupted by a signal, so many of them.
void InterruptWaits(int count);

} // namespace tavrelin
