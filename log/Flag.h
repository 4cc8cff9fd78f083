#pragma once

#include "log/Entry.h"

namespace tavrelin::daylog {

/// What is wrong with a result record's figures; the first that holds.
enum class Flag { None, NotANumber, Infinite, OutOfRange, Negative };

/// At this many counts either way, as six digits show them, the converter is at the end of its 24
/// bits.
inline constexpr double kEndOfRange = 1.67772e7;

/// Out of range: an average at the end of the converter's range or beyond it; negative: chlorine.
Flag FlagOf(const Figures& figures);

/// "not a number", "out of the detector's range", ...; empty for None.
const char* FlagText(Flag flag);

} // namespace tavrelin::daylog
