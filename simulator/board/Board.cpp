#include "simulator/board/Board.h"

#include "simulator/board/Wiring.h"

#include <algorithm>
#include <cmath>

namespace sim {

Board::Board(const Scenario& scenario, std::uint64_t seed, std::int64_t startTime)
    : clock(startTime),
      shaft(scenario.startOnFlag ? PumpShaft::flagFirstStep + 1 : 0, scenario.flagSeen),
      cell(scenario.absorbances), noise_(seed), dark_(scenario.darkCount),
      reference_(scenario.referenceCount), deviation_(scenario.noise) {
    lines.onOutputChange = [this] { outputsChanged(); };
    pwm.onChange = [this] { outputsChanged(); };
    converter.detector = [this](Nanoseconds) { return detectorReading(); };
    converter.answerWith({scenario.converterWords.begin(), scenario.converterWords.end()});

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
        card.mountAtStart();
    }
    for (const std::string& name : scenario.highInputs) {
        lines.setInput(Lines::number(name).value_or(0), true);
    }
    for (const std::string& name : scenario.exportedLines) {
        lines.at(Lines::number(name).value_or(0)).exported = true;
    }
    for (const unsigned channel : scenario.exportedChannels) {
        pwm.at(channel).exported = true;
    }
    for (const WorldEvent& event : scenario.events) {
        at(event.at, [this, event] { take(event); });
    }
    flagShown_ = shaft.onFlag(0);
    lines.setInput(homeSensorLine, !flagShown_);
}

void Board::at(Nanoseconds moment, std::function<void()> action) {
    agenda_.emplace(std::max(moment, now_), std::move(action));
}

Nanoseconds Board::nextEvent() const {
    const Nanoseconds planned = agenda_.empty() ? never : agenda_.begin()->first;
    return std::min(planned, shaft.nextFlagChange(now_));
}

void Board::settle() {
    if (!agenda_.empty() && agenda_.begin()->first <= now_) {
        advanceTo(now_);
    }
}

void Board::advanceTo(Nanoseconds moment) {
    for (Nanoseconds next = nextEvent(); next <= moment; next = nextEvent()) {
        now_ = std::max(now_, next);
        followFlag();
        while (!agenda_.empty() && agenda_.begin()->first <= now_) {
            const auto action = std::move(agenda_.begin()->second);
            agenda_.erase(agenda_.begin());
            action();
        }
    }
    now_ = std::max(now_, moment);
}

void Board::take(const WorldEvent& event) {
    const auto tell = [this](const char* what, const std::string& data) {
        if (onEvent) {
            onEvent(what, data);
        }
    };
    switch (event.kind) {
    case WorldEvent::Kind::removeCard:
        card.remove(now_);
        tell("card", "removed");
        break;
    case WorldEvent::Kind::insertCard:
        card.insert(now_);
        tell("card", "inserted");
        break;
    case WorldEvent::Kind::jumpClock:
        clock.jump(event.value);
        tell("clock", "set by " + std::to_string(event.value) + " s");
        break;
    case WorldEvent::Kind::setInput:
        if (event.line == homeSensorLine) {
            homeHeld_ = true;
        }
        lines.setInput(event.line, event.value != 0);
        tell("input", Lines::name(event.line) + " " + std::to_string(event.value));
        break;
    }
}

void Board::holdHomeSensor(bool level) {
    homeHeld_ = true;
    lines.setInput(homeSensorLine, level);
}

void Board::followFlag() {
    const bool shown = shaft.onFlag(now_);
    if (homeHeld_ || shown == flagShown_) {
        return;
    }
    flagShown_ = shown;
    lines.setInput(homeSensorLine, !shown);
    if (onEvent) {
        onEvent("flag", shown ? "enters the sensor" : "leaves the sensor");
    }
}

void Board::outputsChanged() {
    const PwmOutput& pulses = pwm.at(pumpChannel);
    const bool turning = pulses.pulsing() && lines.drives(pumpEnableLine, false);
    cell.pumpTurned(shaft.stepsTurned(now_));
    shaft.setPulsePeriod(now_, turning ? pulses.period : 0);
    cell.setValve(now_, valveOpen());
    cell.setStirring(now_, stirring(), shaft.stepsTurned(now_));
}

bool Board::valveOpen() const {
    return pwm.at(valveChannel).pulsing();
}

bool Board::stirring() const {
    return pwm.at(stirrerChannel).pulsing() && lines.drives(stirrerEnableLine, false);
}

double Board::lamp() const {
    const PwmOutput& output = pwm.at(lampChannel);
    return output.pulsing() ? static_cast<double>(output.duty) / output.period / lampDuty : 0.0;
}

std::int32_t Board::detectorReading() {
    const double light = lamp() * std::pow(10.0, -cell.absorbance(now_, shaft.stepsTurned(now_)));
    double counts = dark_ + (static_cast<double>(reference_) - dark_) * light;
    if (deviation_ > 0.0) {
        counts += deviation_ * noise_.normal();
    }
    const double most = Converter::largestReading;
    return static_cast<std::int32_t>(std::lround(std::clamp(counts, -most - 1, most)));
}

} // namespace sim
