#pragma once

namespace tavrelin {

/// Diagnostics that print what the calculators make of fixed readings; the run does not call them.

/// Expected values: 0.107906 and 0.5688.
void testAbsorbance();

/// Expected values: 185.04 and 975.389.
void testChlorineConcentration();

} // namespace tavrelin
