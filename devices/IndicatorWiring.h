#pragma once

#include "devices/Wiring.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// The analog front end and the remote indicator, to be checked line by line like the rest of the
/// wiring. Only tavrelin-service drives these lines; they keep their last levels afterwards.
namespace tavrelin::wiring {

// Demultiplexer: its output goes to an input of the board's own converter, so that a voltmeter on
// that input shows the signal that is selected. The select lines carry the channel's three low
// bits; the analog switch is high for channels 0 to 7 and low for 10 to 15, during a reading only.
inline constexpr std::int32_t kDemultiplexerAdcInput = 6;
inline constexpr std::array<Line, 3> kDemultiplexerSelect = {{
    {2, 27}, // C27, lowest bit of the channel
    {2, 28}, // C28
    {2, 31}, // C31
}};

// Remote indicator: six LED lines in the order of its colour table. All are high when it is idle;
// under the test colour, 1, D18 and D17 are high and the others low. The second also switches the
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

// Channels of the demultiplexer that carry the two voltages of the cable measurement, V2 and V0, to
// be measured under the test colour: V2 with C28 high, V0 with C28 low, C27 and C31 low for both.
inline constexpr std::uint32_t kCableV2Channel = 2;
inline constexpr std::uint32_t kCableV0Channel = 0;

} // namespace tavrelin::wiring
