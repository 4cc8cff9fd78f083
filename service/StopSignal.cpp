#include "service/StopSignal.h"

#include "base/Sleep.h"

#include <csignal>
#include <initializer_list>

namespace tavrelin::service {

namespace {

// A sleep goes on after a signal, so the wait is cut into slices with a look at the signals
// between.
constexpr std::uint32_t kSlice = 100; // ms
constexpr std::uint32_t kSlicesPerSecond = 10;

volatile std::sig_atomic_t stopAsked = 0;

void AskToStop(int /*signal*/) {
    stopAsked = 1;
}

} // namespace

void CatchStopSignals() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, AskToStop);
    }
}

void WaitSecondsOrStopSignal(std::uint32_t seconds) {
    for (std::uint32_t left = seconds * kSlicesPerSecond; left > 0 && stopAsked == 0; --left) {
        SleepMilliseconds(kSlice);
    }
}

} // namespace tavrelin::service
