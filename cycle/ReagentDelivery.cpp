#include "cycle/ReagentDelivery.h"

#include "base/SaturatingCast.h"
#include "base/Trace.h"
#include "cycle/StartPosition.h"
#include "devices/Wiring.h"

#include <algorithm>
#include <limits>

namespace tavrelin {

namespace {

constexpr float kFullTurn = 360.0F;

// Pump angle in degrees after the last delivery, written even when the move then failed.
float lastPumpAngle = 0.0F;

void MarkStage(int line) {
    Trace("MeasurementCycle.cpp", "doReagentDeliveryThread", line);
}

bool SearchStart(const StepRequest& request) {
    MarkStage(1008);
    const bool found = doFindStartPosition(request.reagentPump, request.state.MotorSpeed);
    if (found) {
        lastPumpAngle = 0.0F;
    }
    MarkStage(1011);
    return found;
}

// The pump only turns forward: a smaller target means the next turn.
bool TurnToAngle(const StepRequest& request, std::uint32_t moveTime) {
    const float previous = lastPumpAngle;
    const float nextTurn = previous > request.state.MotorAngle ? kFullTurn : 0.0F;
    const float target = request.state.MotorAngle + nextTurn;
    lastPumpAngle = request.state.MotorAngle;
    const bool moved =
        request.reagentPump->MoveAngle(target - previous, wiring::kPumpDuty, moveTime, false);
    MarkStage(1053);
    return moved;
}

bool MovePump(const StepRequest& request) {
    MarkStage(995);
    const std::uint32_t moveTime =
        MoveTime(request.state.MotorAngle, request.state.Duration, request.state.MotorSpeed);
    // All ones is a time that could not be computed. A search has no use for the time, but does not
    // begin without one.
    if (moveTime == std::numeric_limits<std::uint32_t>::max() || moveTime == 0) {
        return false;
    }
    return request.state.FindStartPosition ? SearchStart(request) : TurnToAngle(request, moveTime);
}

} // namespace

// The two orders of evaluation differ in rounding and are both wanted.
std::uint32_t MoveTime(float angle, std::uint32_t limit, std::uint32_t speed) {
    const auto speedNumber = static_cast<float>(speed);
    float time = 0.0F;
    if (SaturatingCast<std::uint32_t>(angle) >= speed) {
        time = speed == 0 ? 0.0F : angle / speedNumber * 1000.0F;
    } else if (angle >= 1.0F) {
        time = 1000.0F / (speedNumber / angle);
    }
    return std::min(SaturatingCast<std::uint32_t>(time), limit);
}

bool DeliverReagent(const StepRequest* request) {
    MarkStage(986);
    const bool canMove =
        request != nullptr && request->state.MotorSpeed != 0 && request->reagentPump != nullptr;
    const bool moved = canMove && MovePump(*request);
    MarkStage(1059);
    return moved;
}

} // namespace tavrelin
