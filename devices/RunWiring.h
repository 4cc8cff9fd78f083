#pragma once

#include "devices/Wiring.h"

#include <array>
#include <cstdint>

/// What a run of the instrument exports, in the order in which it is made safe: what water and
/// reagent flow through first.
namespace tavrelin::wiring {

struct RunChannel {
    std::uint8_t channel;
    const char* drives;
};

inline constexpr std::array<RunChannel, 4> kRunChannels = {{
    {kValveChannel, "sample valve"},
    {kPumpChannel, "reagent pump"},
    {kStirrerChannel, "stirrer"},
    {kLedChannel, "light source"},
}};

struct RunLine {
    Line line;
    const char* carries;
    bool enablesChip; // low enables
};

inline constexpr std::array<RunLine, 7> kRunLines = {{
    {kPumpEnable, "reagent pump, driver chip", true},
    {kStirrerEnable, "stirrer, driver chip", true},
    {kPumpDirection, "reagent pump, direction", false},
    {kPumpCurrentLimit1, "reagent pump, current limit", false},
    {kPumpCurrentLimit2, "reagent pump, current limit", false},
    {kPumpCurrentLimit3, "reagent pump, current limit", false},
    {kHomeSensor, "reagent pump, home sensor", false},
}};

} // namespace tavrelin::wiring
