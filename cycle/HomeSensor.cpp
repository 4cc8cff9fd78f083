#include "cycle/HomeSensor.h"

#include "base/Trace.h"
#include "devices/Wiring.h"

namespace tavrelin {

HomeSensor::HomeSensor() : pin_(wiring::kHomeSensor.bank, wiring::kHomeSensor.bit) {
    // Nobody waits for the edges; the line is set up for them all the same. A failure shows in the
    // reads at most.
    if (pin_.SetDirection(kPinInputWithEdge)) {
        pin_.SetEdge(kEdgeBoth);
    }
}

bool HomeSensor::IsStopPosition() {
    Trace("HomeSensor.cpp", "IsStopPosition", 96);
    return pin_.Read() == kLevelLow;
}

bool HomeSensor::IsLevelHigh() {
    return pin_.Read() == kLevelHigh;
}

} // namespace tavrelin
