#pragma once

#include <cstdint>

/// What is connected where on the board, and how it is driven: to be checked line by line against
/// the wiring plan. Lines are port (bank 0 = A to 3 = D) and bit; channels are those of the PWM
/// controller; frequencies in Hz, duty cycles in percent, times in milliseconds, angles in degrees.
/// The converter on the SPI bus has its device, word size and clock in platform/SpiDevice.
///
/// With a meter: let the instrument run, its status lines tell the step. A channel that pulses
/// shows on a voltmeter as its duty cycle's share of the supply; one that is off shows 0. When the
/// program has ended in good order, channels are off and lines keep their last level; after a
/// hardware failure both stay as they were.
namespace tavrelin::wiring {

struct Line {
    std::uint32_t bank;
    std::uint32_t bit;
};

// Reagent pump: stepper driver, 1600 steps a turn. It moves while priming, while its start position
// is searched, and in step 11. A2 is high from start-up until the first move; then it is low, while
// moving and at rest, because the braked pump is held with the lowest current. A3 stays high. A4 to
// A6 carry the current limit: all high from start-up and while moving, all low when braked. The
// channel pulses at half the supply while moving.
inline constexpr std::uint8_t kPumpChannel = 1;
inline constexpr Line kPumpEnable = {0, 2};        // A2, low enables
inline constexpr Line kPumpDirection = {0, 3};     // A3
inline constexpr Line kPumpCurrentLimit1 = {0, 4}; // A4, lowest bit of the level
inline constexpr Line kPumpCurrentLimit2 = {0, 5}; // A5
inline constexpr Line kPumpCurrentLimit3 = {0, 6}; // A6
inline constexpr std::uint32_t kPumpMovingCurrent = 7;
inline constexpr std::uint32_t kPumpBrakedCurrent = 0;
inline constexpr float kPumpStepsPerTurn = 1600.0F;
inline constexpr float kPumpDegreesPerStep = 0.225F;
inline constexpr float kPumpDuty = 50.0F;

// Home sensor of the pump, an input: the flag in the sensor pulls the line low.
inline constexpr Line kHomeSensor = {1, 18}; // B18

// Stirrer: stepper driver without direction line. B15 is high at rest and low in the steps that
// stir, 3, 5, 10 and 13; meanwhile the channel pulses at half the supply.
inline constexpr std::uint8_t kStirrerChannel = 2;
inline constexpr Line kStirrerEnable = {1, 15}; // B15, low enables
inline constexpr float kStirrerDuty = 50.0F;
inline constexpr float kStirrerFrequency = 640.0F;

// LED light source: pulses at 30 % of the supply from start-up to step 1 and in steps 3 to 16; off
// in the others.
inline constexpr std::uint8_t kLedChannel = 0;
inline constexpr float kLedFrequency = 1000.0F;
inline constexpr float kLedDuty = 30.0F;

// Sample valve coil: at the full supply without pulses while the valve is open, when priming and in
// steps 3 to 5; off in the others.
inline constexpr std::uint8_t kValveChannel = 3;
inline constexpr std::uint16_t kValveFrequency = 1000;
inline constexpr float kValveOpenDuty = 100.0F;

// Optical converter: asked on the bus every 250 ms in steps 1 to 16.
inline constexpr std::uint32_t kDetectorInput = 0;
inline constexpr std::uint32_t kConversionTime = 250;

// Priming at start-up: two turns at 1600 steps a second.
inline constexpr float kPrimeAngle = 720.0F;
inline constexpr std::uint32_t kPrimeTime = 2000;

} // namespace tavrelin::wiring
