#pragma once

#include <cstdint>

namespace tavrelin::service {

/// From now on the signals that ask a program to end (interrupt, terminate, hang-up) no longer end
/// it but the wait below and a wait for an edge: who started a child can still stop it, who took a
/// line can still give it back.
void CatchStopSignals();

/// Waits, until one of these signals has come at the latest.
void WaitSecondsOrStopSignal(std::uint32_t seconds);

} // namespace tavrelin::service
