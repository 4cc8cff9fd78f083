#include "simulator/board/Board.h"

#include "simulator/board/Wiring.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace sim {
namespace {

/// The fewest digits that stand for this number and no other.
std::string ShortText(double number) {
    std::array<char, 32> text{};
    std::to_chars(text.data(), text.data() + text.size(), number);
    return text.data();
}

} // namespace

Board::Board(const BoardSetup& setup, std::uint64_t seed, std::int64_t startTime)
    : present(setup.present), lines(setup.lines), pwm(setup.channels), card(setup.card),
      clock(startTime), shaft(setup.pump), cell(setup.absorbances), analog(setup.analog, lines),
      flagShown_(shaft.OnFlag(0)), noise_(seed), detector_(setup.detector) {
    lines.onOutputChange = [this] { OutputsChanged(); };
    pwm.onChange = [this] { OutputsChanged(); };
    converter.detector = [this](Nanoseconds) { return DetectorReading(); };
    converter.AnswerWith(setup.converterWords);
    card.present = card.present && present;
    card.mounted = card.mounted && card.present;
    for (const WorldEvent& event : setup.events) {
        if (!event.when.Set()) {
            Plan(event);
        }
    }
    lines.SetInput(kHomeSensorLine, !flagShown_);
}

void Board::At(Nanoseconds moment, std::function<void()> action) {
    agenda_.emplace(std::max(moment, now_), std::move(action));
}

void Board::Plan(const WorldEvent& event) {
    At(event.at, [this, event] { Happen(event); });
}

Nanoseconds Board::NextEvent() const {
    const Nanoseconds planned = agenda_.empty() ? kNever : agenda_.begin()->first;
    return std::min(planned, shaft.NextFlagChange(now_));
}

void Board::Settle() {
    if (!agenda_.empty() && agenda_.begin()->first <= now_) {
        AdvanceTo(now_);
    }
}

void Board::AdvanceTo(Nanoseconds moment) {
    for (Nanoseconds next = NextEvent(); next <= moment; next = NextEvent()) {
        PassTo(next);
        FollowFlag();
        while (!agenda_.empty() && agenda_.begin()->first <= now_) {
            const auto action = std::move(agenda_.begin()->second);
            agenda_.erase(agenda_.begin());
            action();
        }
    }
    PassTo(moment);
}

void Board::PassTo(Nanoseconds moment) {
    if (moment <= now_) {
        return;
    }
    if (onPass) {
        onPass(moment);
    }
    now_ = moment;
}

void Board::Happen(const WorldEvent& event) {
    const auto tell = [this](const char* what, const std::string& data) {
        if (onEvent) {
            onEvent(what, data);
        }
    };
    switch (event.kind) {
    case WorldEvent::Kind::RemoveCard:
        PullCard();
        tell("card", "removed");
        break;
    case WorldEvent::Kind::InsertCard:
        card.Insert();
        tell("card", "inserted");
        break;
    case WorldEvent::Kind::LockCard:
    case WorldEvent::Kind::UnlockCard:
        card.writeProtected = event.kind == WorldEvent::Kind::LockCard;
        tell("card", card.writeProtected ? "locked" : "unlocked");
        break;
    case WorldEvent::Kind::JumpClock:
        clock.Jump(event.value);
        tell("clock", "set by " + std::to_string(event.value) + " s");
        break;
    case WorldEvent::Kind::SetInput:
        if (event.line == kHomeSensorLine) {
            homeHeld_ = true;
        }
        lines.SetInput(event.line, event.value != 0);
        tell("input", Lines::Name(event.line) + " " + std::to_string(event.value));
        break;
    case WorldEvent::Kind::SetNextSample:
        cell.SetNext(event.number);
        tell("sample", "next " + ShortText(event.number));
        break;
    case WorldEvent::Kind::SetNoise:
        detector_.noise = event.number;
        tell("detector", "noise " + ShortText(event.number));
        break;
    case WorldEvent::Kind::ShowFlag:
        shaft.ShowFlag(event.value != 0);
        tell("flag", event.value != 0 ? "free" : "blocked");
        FollowFlag();
        break;
    case WorldEvent::Kind::CutPower:
        tell("power", "cut");
        onPowerCut();
        break;
    }
}

void Board::PullCard() {
    card.Remove(now_);
    At(now_ + CardSlot::kRemovalNoticed, [this] { card.NoticeRemoval(now_); });
}

void Board::HoldHomeSensor(bool level) {
    homeHeld_ = true;
    lines.SetInput(kHomeSensorLine, level);
}

void Board::PlaceShaft(std::int64_t step) {
    shaft.PlaceAt(step);
    flagShown_ = shaft.OnFlag(now_);
    lines.SetInput(kHomeSensorLine, !flagShown_);
}

void Board::FollowFlag() {
    const bool shown = shaft.OnFlag(now_);
    if (homeHeld_ || shown == flagShown_) {
        return;
    }
    flagShown_ = shown;
    lines.SetInput(kHomeSensorLine, !shown);
    if (onEvent) {
        onEvent("flag", shown ? "enters the sensor" : "leaves the sensor");
    }
}

void Board::OutputsChanged() {
    const PwmOutput& pulses = pwm.At(kPumpChannel);
    const bool turning = pulses.Pulsing() && lines.Drives(kPumpEnableLine, false);
    cell.PumpTurned(shaft.StepsTurned(now_));
    shaft.SetPulsePeriod(
        now_,
        turning ? static_cast<Nanoseconds>(std::min<std::uint64_t>(pulses.period, kNever)) : 0);
    cell.SetValve(now_, ValveOpen());
    cell.SetStirring(now_, Stirring(), shaft.StepsTurned(now_));
    if (onOutputs) {
        onOutputs();
    }
}

bool Board::ValveOpen() const {
    return pwm.At(kValveChannel).Pulsing();
}

bool Board::Stirring() const {
    return pwm.At(kStirrerChannel).Pulsing() && lines.Drives(kStirrerEnableLine, false);
}

double Board::Lamp() const {
    const PwmOutput& output = pwm.At(kLampChannel);
    return output.Pulsing()
               ? static_cast<double>(output.duty) / static_cast<double>(output.period) / kLampDuty
               : 0.0;
}

std::int32_t Board::DetectorReading() {
    const double light = Lamp() * std::pow(10.0, -cell.Absorbance(now_, shaft.StepsTurned(now_)));
    double counts =
        detector_.dark + (static_cast<double>(detector_.reference) - detector_.dark) * light;
    if (detector_.noise > 0.0) {
        counts += detector_.noise * noise_.Normal();
    }
    const double most = Converter::kLargestReading;
    return static_cast<std::int32_t>(std::lround(std::clamp(counts, -most - 1, most)));
}

} // namespace sim
