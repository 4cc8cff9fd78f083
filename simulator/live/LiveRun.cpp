#include "simulator/live/LiveRun.h"

#include "simulator/board/Wiring.h"
#include "simulator/libc/Real.h"
#include "simulator/scenario/ScenarioFile.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <type_traits>
#include <utility>
#include <variant>

namespace sim {
namespace {

constexpr Nanoseconds kPausedLook = Milliseconds(5);
constexpr std::size_t kLongestLine = 4096;
constexpr std::size_t kFaultsShown = 16;

bool Begins(std::string_view text, std::string_view with) {
    return text.substr(0, with.size()) == with;
}

/// A number as JSON knows it: it has no infinities.
std::string Number(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.12g", number);
    return std::isfinite(number) ? text : "null";
}

template <typename Integer>
requires std::is_integral_v<Integer> std::string Number(Integer number) {
    return std::to_string(number);
}

std::string Number(bool truth) {
    return truth ? "true" : "false";
}

/// A text of printing characters in quotes, as JSON has it.
std::string Text(std::string_view text) {
    std::string quoted = "\"";
    for (const char character : text) {
        if (static_cast<unsigned char>(character) >= ' ') {
            quoted += character == '"' || character == '\\' ? "\\" : "";
            quoted += character;
        }
    }
    return quoted + "\"";
}

/// The members of a JSON object, each as name and value.
using Members = std::initializer_list<std::pair<const char*, std::string>>;

std::string List(const Members& members) {
    std::string text;
    for (const auto& [name, value] : members) {
        text += (text.empty() ? "\"" : ",\"") + std::string(name) + "\":" + value;
    }
    return text;
}

std::string Object(const Members& members) {
    return "{" + List(members) + "}";
}

/// What the remote indicator shows: nothing while its lines rest high, or belong to nobody.
std::string Indicator(const Board& board) {
    const auto lit = [&](unsigned line) { return board.lines.Drives(line, false); };
    if (board.analog.ShowsTestColour()) {
        return "orange";
    }
    return std::any_of(kIndicatorLines.begin(), kIndicatorLines.end(), lit) ? "yellow" : "off";
}

/// Without the place in the command's own text, which nobody sees.
std::string Problem(const ScenarioError& error) {
    const std::size_t place = error.text.find(": ");
    std::string text = place == std::string::npos ? error.text : error.text.substr(place + 2);
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

} // namespace

LiveRun::LiveRun(LiveLink& link, Simulation& simulation, std::string scenario, double pace)
    : link_(link), simulation_(simulation), scenario_(std::move(scenario)), pace_(pace) {
    scenario_ += '\n'; // its last line may lack one
    simulation_.timeline.SetPace(pace_);
    simulation_.onShow = [this](std::string_view text) { ReadAlong(text); };
    auto& detector = simulation_.board.converter.detector;
    detector = [this, measure = detector](Nanoseconds now) {
        reading_ = measure(now);
        ++readings_;
        const LiveFigure figure{static_cast<double>(now) / 1e9, static_cast<double>(reading_)};
        link_.readings.Put(&figure, 1);
        return reading_;
    };
    Publish();
}

void LiveRun::Attend() {
    bool waited = false;
    for (;;) {
        const std::uint32_t news = link_.news.exchange(0, std::memory_order_acquire);
        if ((news & LiveLink::kCommand) != 0) {
            Obey();
        }
        if ((news & LiveLink::kState) != 0) {
            Publish();
        }
        if (!paused_) {
            break;
        }
        waited = true;
        real::SleepFor(kPausedLook);
    }
    if (waited) {
        simulation_.timeline.SetPace(pace_); // the pause took no board time
    }
}

void LiveRun::ReadAlong(std::string_view text) {
    link_.console.Put(text.data(), text.size());
    for (const char character : text) {
        if (character == '\n') {
            ReadLine();
            line_.clear();
        } else if (line_.size() < kLongestLine) {
            line_ += character;
        }
    }
    if (const std::uint64_t shown = simulation_.console.Measurements(); shown > measurements_) {
        measurements_ = shown;
        const LiveFigure figure{static_cast<double>(simulation_.board.Now()) / 1e9, chlorine_};
        link_.results.Put(&figure, 1);
        paused_ = paused_ || shown == pauseAtMeasurement_;
    }
}

/// "main.cpp, 889: 3, 1" begins row 3; the third field of a status line is the last chlorine.
void LiveRun::ReadLine() {
    constexpr std::string_view step = "main.cpp, 889: ";
    if (Begins(line_, step)) {
        row_ = std::strtol(line_.c_str() + step.size(), nullptr, 10);
    } else if (Begins(line_, "TAVRELIN,")) {
        const std::size_t comma = line_.find(',', line_.find(',') + 1);
        chlorine_ =
            comma != std::string::npos ? std::strtod(line_.c_str() + comma + 1, nullptr) : 0.0;
    }
}

void LiveRun::Obey() {
    LiveLink::Stage posted = LiveLink::Stage::Posted;
    if (!link_.stage.compare_exchange_strong(posted, LiveLink::Stage::Taken)) {
        return; // the launcher has thought better of it
    }
    Nanoseconds at = simulation_.board.Now();
    const std::string refusal = CarryOut(link_.command.data(), at);
    std::snprintf(link_.refusal.data(), link_.refusal.size(), "%s", refusal.c_str());
    link_.at = at;
    link_.stage = refusal.empty() ? LiveLink::Stage::Done : LiveLink::Stage::Refused;
}

std::string LiveRun::CarryOut(const std::string& command, Nanoseconds& at) {
    if (Begins(command, "[[")) {
        do {
            at = (at / 1'000 + 1) * 1'000;
        } while (simulation_.board.IsPlanned(at));
        return Meddle(command, at);
    }
    if (Begins(command, "pace ")) {
        pace_ = std::strtod(command.c_str() + 5, nullptr);
        simulation_.timeline.SetPace(pace_);
        return {};
    }
    pauseAtStep_ = command == "step" ? simulation_.console.Steps() + 1 : 0;
    pauseAtMeasurement_ = command == "measurement" ? simulation_.console.Measurements() + 1 : 0;
    paused_ = command == "pause";
    return {};
}

std::string LiveRun::Meddle(const std::string& table, Nanoseconds at) {
    const std::string text = WithMoment(table, at);
    auto read = ParseScenario(text, "bench");
    if (const auto* error = std::get_if<ScenarioError>(&read)) {
        return Problem(*error);
    }
    auto whole = ParseScenario(scenario_ + text, "scenario");
    if (const auto* error = std::get_if<ScenarioError>(&whole)) {
        return "the scenario cannot take it: " + Problem(*error);
    }
    scenario_ += text;
    const Scenario& added = std::get<Scenario>(read);
    for (const WorldEvent& event : added.board.events) {
        simulation_.board.Plan(event);
    }
    for (const Fault& fault : added.kernel.faults) {
        simulation_.kernel.calls.faults.Add(fault);
    }
    if (!added.board.events.empty()) { // a fault is no news to who looks at the board
        simulation_.scheduler.WakeForBoard(at);
    }
    return {};
}

void LiveRun::Publish() {
    const std::string text = State();
    link_.published.fetch_add(1, std::memory_order_acq_rel);
    std::snprintf(link_.state.data(), link_.state.size(), "%s", text.c_str());
    link_.published.fetch_add(1, std::memory_order_release);
}

std::string LiveRun::Faults() const {
    const std::vector<Fault>& armed = simulation_.kernel.calls.faults.Armed();
    std::string text;
    for (std::size_t i = armed.size() - std::min(armed.size(), kFaultsShown); i < armed.size();
         ++i) {
        const Fault& fault = armed[i];
        text +=
            (text.empty() ? "" : ",") + Object({{"call", Text(fault.call)},
                                                {"path", Text(fault.path.substr(0, 256))},
                                                {"at", Number(static_cast<double>(fault.at) / 1e9)},
                                                {"struck", Number(fault.struck)}});
    }
    return "[" + text + "]";
}

std::string LiveRun::State() const {
    const Board& board = simulation_.board;
    const Nanoseconds now = board.Now();
    const std::int64_t turned = board.shaft.StepsTurned(now);
    const PwmOutput& pump = board.pwm.At(kPumpChannel);
    int limit = 0;
    for (unsigned bit = 0; bit < 3; ++bit) {
        limit += board.lines.Drives(kPumpCurrentLines.at(bit), true) ? 1 << bit : 0;
    }
    return List({
        {"time", Number(std::round(static_cast<double>(now) / 1e3) / 1e6)},
        {"clock", Text(WallClock::Text(board.WallTime() / Seconds(1)))},
        {"paused", Number(paused_)},
        {"pace", Number(pace_)},
        {"step", Number(row_)},
        {"steps", Number(simulation_.console.Steps())},
        {"measurements", Number(simulation_.console.Measurements())},
        {"chlorine", Number(chlorine_)},
        {"lamp", Object({{"duty", Number(board.pwm.At(kLampChannel).DutyPercent())}})},
        {"valve", Object({{"open", Number(board.ValveOpen())},
                          {"duty", Number(board.pwm.At(kValveChannel).DutyPercent())}})},
        {"stirrer",
         Object({{"on", Number(board.Stirring())},
                 {"frequency", Number(std::llround(board.pwm.At(kStirrerChannel).Frequency()))}})},
        {"pump", Object({{"enabled", Number(board.lines.Drives(kPumpEnableLine, false))},
                         {"forward", Number(board.lines.Drives(kPumpDirectionLine, true))},
                         {"frequency", Number(std::llround(pump.Frequency()))},
                         {"limit", Number(limit)},
                         {"angle", Number(360.0 * static_cast<double>(board.shaft.StepOfTurn(now)) /
                                          static_cast<double>(PumpShaft::kStepsPerTurn))},
                         {"flag", Number(board.shaft.OnFlag(now))},
                         {"blocked", Number(!board.shaft.FlagSeen())}})},
        {"cell", Object({{"absorbance", Number(board.cell.Absorbance(now, turned))},
                         {"sample", Number(board.cell.TrueAbsorbance())},
                         {"next", Number(board.cell.NextAbsorbance())}})},
        {"converter", Object({{"reading", Number(reading_)}, {"count", Number(readings_)}})},
        {"noise", Number(board.DetectorNoise())},
        {"indicator", Text(Indicator(board))},
        {"faults", Faults()},
        {"card", Object({{"present", Number(board.card.present)},
                         {"mounted", Number(board.card.mounted)},
                         {"locked", Number(board.card.writeProtected)}})},
    });
}

} // namespace sim
