#pragma once

#include "devices/Wiring.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// The analog front end and the remote indicator, to be checked line by line like the rest of the
/// wiring.
namespace tavrelin::wiring {

// Demultiplexer: its output goes to an input of the board's own converter.
inline constexpr std::int32_t kDemultiplexerAdcInput = 6;
inline constexpr std::array<Line, 3> kDemultiplexerSelect = {{
    {2, 27}, // C27, lowest bit of the channel
    {2, 28}, // C28
    {2, 31}, // C31
}};

// Remote indicator: six LED lines in the order of its colour table. The second also switches the
// demultiplexer between its two groups of channels.
inline constexpr std::array<Line, 6> kIndicatorLeds = {{
    {3, 16}, // D16
    {3, 18}, // D18, analog switch
    {3, 20}, // D20
    {3, 17}, // D17
    {3, 19}, // D19
    {3, 21}, // D21
}};
inline constexpr std::size_t kAnalogSwitchLed = 1;

// Channels of the demultiplexer that carry the two voltages of the cable measurement, V2 and V0.
inline constexpr std::uint32_t kCableV2Channel = 2;
inline constexpr std::uint32_t kCableV0Channel = 0;

} // namespace tavrelin::wiring
