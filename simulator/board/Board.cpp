#include "simulator/board/Board.h"

#include "simulator/board/Wiring.h"

#include <algorithm>
#include <cmath>

namespace sim {

Board::Board(const Scenario& scenario, std::uint64_t seed, std::int64_t startTime)
    : clock(startTime),
      shaft(scenario.startOnFlag ? PumpShaft::kFlagFirstStep + 1 : 0, scenario.flagSeen),
      cell(scenario.absorbances), noise_(seed), dark_(scenario.darkCount),
      reference_(scenario.referenceCount), deviation_(scenario.noise) {
    lines.onOutputChange = [this] { OutputsChanged(); };
    pwm.onChange = [this] { OutputsChanged(); };
    converter.detector = [this](Nanoseconds) { return DetectorReading(); };
    converter.AnswerWith({scenario.converterWords.begin(), scenario.converterWords.end()});

    card.present = scenario.cardPresent && scenario.boardPresent;
    analog.cableLength = scenario.cableLength;
    analog.lampVoltage = scenario.lampVoltage;
    analog.scale = scenario.adcScale;
    for (const auto& [input, volts] : scenario.adcInputs) {
        analog.direct.at(static_cast<std::size_t>(input)) = volts;
    }
    card.partitioned = scenario.cardPartitioned;
    card.fat = scenario.cardFat;
    card.writeProtected = scenario.cardWriteProtected;
    card.readOnly = scenario.cardReadOnly;
    card.mountPointExists = scenario.mountPointExists;
    card.freeBytes = scenario.cardFreeBytes;
    if (scenario.cardMounted) {
        card.MountAtStart();
    }
    for (const std::string& name : scenario.highInputs) {
        lines.SetInput(Lines::Number(name).value_or(0), true);
    }
    for (const std::string& name : scenario.exportedLines) {
        lines.At(Lines::Number(name).value_or(0)).exported = true;
    }
    for (const unsigned channel : scenario.exportedChannels) {
        pwm.At(channel).exported = true;
    }
    for (const WorldEvent& event : scenario.events) {
        At(event.at, [this, event] { Take(event); });
    }
    flagShown_ = shaft.OnFlag(0);
    lines.SetInput(kHomeSensorLine, !flagShown_);
}

void Board::At(Nanoseconds moment, std::function<void()> action) {
    agenda_.emplace(std::max(moment, now_), std::move(action));
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
        now_ = std::max(now_, next);
        FollowFlag();
        while (!agenda_.empty() && agenda_.begin()->first <= now_) {
            const auto action = std::move(agenda_.begin()->second);
            agenda_.erase(agenda_.begin());
            action();
        }
    }
    now_ = std::max(now_, moment);
}

void Board::Take(const WorldEvent& event) {
    const auto tell = [this](const char* what, const std::string& data) {
        if (onEvent) {
            onEvent(what, data);
        }
    };
    switch (event.kind) {
    case WorldEvent::Kind::RemoveCard:
        card.Remove(now_);
        tell("card", "removed");
        break;
    case WorldEvent::Kind::InsertCard:
        card.Insert(now_);
        tell("card", "inserted");
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
    }
}

void Board::HoldHomeSensor(bool level) {
    homeHeld_ = true;
    lines.SetInput(kHomeSensorLine, level);
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
    shaft.SetPulsePeriod(now_, turning ? pulses.period : 0);
    cell.SetValve(now_, ValveOpen());
    cell.SetStirring(now_, Stirring(), shaft.StepsTurned(now_));
}

bool Board::ValveOpen() const {
    return pwm.At(kValveChannel).Pulsing();
}

bool Board::Stirring() const {
    return pwm.At(kStirrerChannel).Pulsing() && lines.Drives(kStirrerEnableLine, false);
}

double Board::Lamp() const {
    const PwmOutput& output = pwm.At(kLampChannel);
    return output.Pulsing() ? static_cast<double>(output.duty) / output.period / kLampDuty : 0.0;
}

std::int32_t Board::DetectorReading() {
    const double light = Lamp() * std::pow(10.0, -cell.Absorbance(now_, shaft.StepsTurned(now_)));
    double counts = dark_ + (static_cast<double>(reference_) - dark_) * light;
    if (deviation_ > 0.0) {
        counts += deviation_ * noise_.Normal();
    }
    const double most = Converter::kLargestReading;
    return static_cast<std::int32_t>(std::lround(std::clamp(counts, -most - 1, most)));
}

} // namespace sim
