#include "simulator/run/Waveform.h"

#include "simulator/board/Wiring.h"

#include <utility>

namespace sim {
namespace {

using V = ValueChanges;

constexpr std::size_t kLongestText = 1000;

} // namespace

Waveform::Waveform(Board& board, const ConsoleWatch& console) : board_(board), console_(console) {}

bool Waveform::WriteTo(const std::string& path, FileBuffer& buffer) {
    NoteOutputs();
    NoteWorld();
    if (!file_.Open(path, buffer)) {
        return false;
    }
    file_.Begin(WallClock::Text(board_.WallTime() / Seconds(1)), values_);
    board_.onOutputs = [this] { NoteOutputs(); };
    board_.onPass = [this](Nanoseconds until) { Pass(until); };
    board_.converter.onCommand = [this](std::uint32_t command) {
        Set(V::ConverterCommand, command >> 16U);
        SetLevel(V::Converting, true);
    };
    board_.converter.onWord = [this](std::uint32_t word) {
        Set(V::ConverterResult, word);
        Set(V::ConverterCount, Converter::Reading(word));
        SetLevel(V::Converting, false);
    };
    return true;
}

void Waveform::Show(std::string_view text) {
    if (!file_.IsOpen()) {
        return;
    }
    for (const char character : text) {
        if (character == '\n') {
            ShowLine();
            line_.clear();
        } else if (line_.size() < kLongestText) {
            line_ += character;
        }
    }
}

/// A reader shows one value for a moment: the lines of one moment become one text.
void Waveform::ShowLine() {
    const bool more = shownAt_ == board_.Now() && shown_.size() < kLongestText;
    shown_ = more ? shown_ + " | " + line_ : line_;
    shownAt_ = board_.Now();
    Stamp();
    file_.PutText(V::ConsoleLine, shown_);
    if (console_.StepText() != stepName_) {
        stepName_ = console_.StepText();
        file_.PutText(V::StepName, stepName_);
    }
    Set(V::StepNumber, console_.StepNumber());
    Set(V::MeasurementCount, static_cast<double>(console_.Measurements()));
}

void Waveform::ShowFault(std::string_view call, std::string_view path, const std::string& what) {
    Stamp(); // first: the pulse before may end with it
    SetLevel(V::Fault, true);
    Set(V::FaultCount, values_[V::FaultCount] + 1.0);
    file_.PutText(V::FaultCall, std::string(call) + " " + std::string(path) + " " + what);
    faultEnds_ = file_.Time() + 1;
}

void Waveform::Finish() {
    if (file_.IsOpen()) {
        NoteWorld();
        Stamp();
        file_.Flush();
    }
}

void Waveform::NoteOutputs() {
    const auto level = [this](unsigned line) {
        const Line& at = board_.lines.At(line);
        return at.output ? static_cast<double>(at.level) : V::kUndriven;
    };
    const PwmChip& channels = board_.pwm;
    SetLevel(V::LightOn, channels.At(kLampChannel).Pulsing());
    Set(V::LightDuty, channels.At(kLampChannel).DutyPercent());
    SetLevel(V::ValveOpen, board_.ValveOpen());
    Set(V::ValveDuty, channels.At(kValveChannel).DutyPercent());
    Set(V::StirrerEnable, level(kStirrerEnableLine));
    SetLevel(V::Stirring, board_.Stirring());
    Set(V::StirrerFrequency, channels.At(kStirrerChannel).Frequency());
    Set(V::PumpEnable, level(kPumpEnableLine));
    Set(V::PumpDirection, level(kPumpDirectionLine));
    for (std::size_t bit = 0; bit < kPumpCurrentLines.size(); ++bit) {
        Set(V::PumpCurrent0 + bit, level(kPumpCurrentLines.at(bit)));
    }
    Set(V::PumpFrequency, channels.At(kPumpChannel).Frequency());
    NoteShaft(board_.Now());
}

void Waveform::NoteShaft(Nanoseconds now) {
    constexpr double degrees = 360.0 / PumpShaft::kStepsPerTurn;
    const double angle = degrees * static_cast<double>(board_.shaft.StepOfTurn(now));
    if (angle != values_[V::ShaftAngle]) {
        Change(V::ShaftAngle, angle, now);
    }
}

void Waveform::NoteWorld() {
    if (board_.shaft.OnFlag(board_.Now()) != (values_[V::Flag] != 0.0)) {
        Set(V::Flag, 1.0 - values_[V::Flag]);
        NoteShaft(board_.Now());
    }
    SetLevel(V::HomeSensor, board_.lines.At(kHomeSensorLine).level);
    SetLevel(V::CardPresent, board_.card.present);
    SetLevel(V::CardMounted, board_.card.mounted);
    Set(V::CardBytes, static_cast<double>(board_.card.Written()));
}

void Waveform::Pass(Nanoseconds until) {
    NoteWorld();
    if (!board_.shaft.Turning()) {
        return;
    }
    const Nanoseconds first = (board_.Now() / kShaftInterval + 1) * kShaftInterval;
    for (Nanoseconds moment = first; moment < until; moment += kShaftInterval) {
        NoteShaft(moment);
    }
}

void Waveform::Change(std::size_t variable, double value, Nanoseconds moment) {
    values_[variable] = value;
    Stamp(moment);
    file_.Put(variable, value);
}

void Waveform::Stamp(Nanoseconds moment) {
    const std::int64_t now = moment / Microseconds(1);
    if (faultEnds_ >= 0 && faultEnds_ <= now) {
        file_.GoTo(std::exchange(faultEnds_, -1));
        values_[V::Fault] = 0.0;
        file_.Put(V::Fault, 0.0);
    }
    file_.GoTo(now);
}

} // namespace sim
