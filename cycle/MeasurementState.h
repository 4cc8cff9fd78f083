#pragma once

#include <cstdint>
#include <string>

namespace tavrelin {

/// One row of the state table: what the instrument does in one step of a measurement.
struct MeasurementState {
    std::uint8_t Step = 1;          ///< number of the step, counted from 1
    std::uint32_t Duration = 0;     ///< ms
    bool LEDStatus = false;         ///< light source on during the step
    bool StirringStatus = false;    ///< stirrer runs for the duration
    bool SRVDStatus = false;        ///< carried and printed; nothing acts on it
    bool ADCMonitorStatus = false;  ///< the optical signal is sampled
    bool FindStartPosition = false; ///< the pump searches its start position, not an angle
    float MotorAngle = 0.0F;        ///< pump target, degrees
    std::uint32_t MotorSpeed = 0;   ///< pump, degrees per second; 0 leaves it at rest
    bool ValveStatus = false;       ///< sample valve open
    std::string Description{};      ///< name of the step, on the console and in the log
};

/// The steps whose samples become the readings of a measurement are known by these names.
inline constexpr const char* kDarkCountStep = "Dark Count Measurement";
inline constexpr const char* kReferenceStep = "Reference Optical Measurement";
inline constexpr const char* kReactedSampleStep = "Reacted Sample Optical Measurement";

} // namespace tavrelin
