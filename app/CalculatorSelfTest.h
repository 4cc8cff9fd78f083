#pragma once

namespace tavrelin {

/// Diagnostics that print what the calculators make of fixed readings; the run does not call them.

/// Expected values: 0.107906 and 0.5688.
void testAbsorbance();

/// Expected values: 185.04 and 975.389.
void testChlorineConcentration();

/// What the first value of a self-test is made of: detector counts, in the order in which the
/// calculators are given them.
struct SelfTestReadings {
    float darkCount = 20.0F;
    float reference = 3000000.0F;
    float sample = 2340000.0F;
};

/// The self-tests with readings of one's choice. The first reading that is NaN is told in an error
/// line, in place of the first value; the second is made of fixed readings and always there.
void PrintAbsorbances(const SelfTestReadings& readings);
void PrintConcentrations(const SelfTestReadings& readings);

} // namespace tavrelin
