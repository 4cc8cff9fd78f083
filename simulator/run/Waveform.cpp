#include "simulator/run/Waveform.h"

#include "simulator/board/Wiring.h"

#include <charconv>
#include <cmath>
#include <utility>

namespace sim {
namespace {

/// All variables, in the order of the file's header.
enum Variable : std::size_t {
    LightOn,
    LightDuty,
    ValveOpen,
    ValveDuty,
    StirrerEnable,
    Stirring,
    StirrerFrequency,
    PumpEnable,
    PumpDirection,
    PumpCurrent0,
    PumpCurrent1,
    PumpCurrent2,
    PumpFrequency,
    ShaftAngle,
    Flag,
    HomeSensor,
    Converting,
    ConverterCommand,
    ConverterResult,
    ConverterCount,
    CardPresent,
    CardMounted,
    CardBytes,
    StepNumber,
    StepName,
    MeasurementCount,
    ConsoleLine,
    Fault,
    FaultCount,
    FaultCall,
    Count
};

struct Declaration {
    const char* scope;
    const char* type;
    const char* name; ///< one of its kind in all scopes: not every reader shows those
};

constexpr const char* kWire = "wire 1";
constexpr const char* kReal = "real 64";
constexpr const char* kText = "string 1";

constexpr std::array<Declaration, Count> kDeclarations{{
    {"light", kWire, "light_on"},
    {"light", kReal, "light_duty"},
    {"valve", kWire, "valve_open"},
    {"valve", kReal, "valve_duty"},
    {"stirrer", kWire, "stirrer_enable_n"},
    {"stirrer", kWire, "stirring"},
    {"stirrer", kReal, "stirrer_frequency"},
    {"pump", kWire, "pump_enable_n"},
    {"pump", kWire, "pump_direction"},
    {"pump", kWire, "pump_current_0"},
    {"pump", kWire, "pump_current_1"},
    {"pump", kWire, "pump_current_2"},
    {"pump", kReal, "pump_frequency"},
    {"pump", kReal, "shaft_angle"},
    {"pump", kWire, "flag"},
    {"home_sensor", kWire, "home_sensor"},
    {"converter", kWire, "converting"},
    {"converter", kReal, "converter_command"},
    {"converter", kReal, "converter_result"},
    {"converter", kReal, "converter_count"},
    {"card", kWire, "card_present"},
    {"card", kWire, "card_mounted"},
    {"card", kReal, "card_bytes"},
    {"step", kReal, "step_number"},
    {"step", kText, "step_name"},
    {"step", kReal, "measurement_count"},
    {"console", kText, "console_line"},
    {"faults", kWire, "fault"},
    {"faults", kReal, "fault_count"},
    {"faults", kText, "fault_call"},
}};

/// The variables' identifiers: none that begins a value, a time or a section, because a reader that
/// does not know texts stumbles over what stands behind them.
constexpr std::string_view kIdentifiers = "!%&'()*+,./23456789:;<=>?@ACDEFG";
static_assert(kIdentifiers.size() >= Count);

constexpr double kUndriven = -1.0; ///< of a wire
constexpr std::size_t kLongestText = 1000;

double DutyPercent(const PwmOutput& output) {
    return output.Pulsing()
               ? 100.0 * static_cast<double>(output.duty) / static_cast<double>(output.period)
               : 0.0;
}

/// In hertz, to the thousandth.
double Frequency(const PwmOutput& output) {
    return output.Pulsing() ? std::round(1e12 / static_cast<double>(output.period)) / 1e3 : 0.0;
}

/// Printable characters but blank and backslash stand for themselves, the rest in octal digits.
std::string Escaped(std::string_view text) {
    std::string result;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte > ' ' && byte < 0x7F && byte != '\\') {
            result += character;
        } else {
            result += '\\';
            for (const unsigned shift : {6U, 3U, 0U}) {
                result += static_cast<char>('0' + ((byte >> shift) & 7U));
            }
        }
    }
    return result;
}

} // namespace

Waveform::Waveform(Board& board, const ConsoleWatch& console)
    : board_(board), console_(console), values_(Count) {}

bool Waveform::WriteTo(const std::string& path, FileBuffer& buffer) {
    NoteOutputs();
    NoteWorld();
    if (!file_.Open(path, buffer)) {
        return false;
    }
    WriteHeader();
    board_.onOutputs = [this] { NoteOutputs(); };
    board_.onPass = [this](Nanoseconds until) { Pass(until); };
    board_.converter.onCommand = [this](std::uint32_t command) {
        Set(ConverterCommand, command >> 16U);
        SetLevel(Converting, true);
    };
    board_.converter.onWord = [this](std::uint32_t word) {
        Set(ConverterResult, word);
        Set(ConverterCount, Converter::Reading(word));
        SetLevel(Converting, false);
    };
    return true;
}

void Waveform::WriteHeader() {
    std::string text = "$date " + WallClock::Text(board_.WallTime() / Seconds(1)) +
                       " UTC on the board's clock $end\n" +
                       "$version simulate, the simulated board of tavrelin $end\n" +
                       "$timescale 1 us $end\n$scope module board $end\n";
    std::string_view scope;
    for (std::size_t variable = 0; variable < Count; ++variable) {
        const Declaration& declared = kDeclarations.at(variable);
        if (declared.scope != scope) {
            text += scope.empty() ? "" : "$upscope $end\n";
            text += std::string("$scope module ") + declared.scope + " $end\n";
            scope = declared.scope;
        }
        text += std::string("$var ") + declared.type + " " + kIdentifiers[variable] + " " +
                declared.name + " $end\n";
    }
    file_.Put(text + "$upscope $end\n$upscope $end\n$enddefinitions $end\n#0\n$dumpvars\n");
    for (std::size_t variable = 0; variable < Count; ++variable) {
        if (kDeclarations.at(variable).type == kText) {
            PutText(variable, "");
        } else {
            PutValue(variable, values_.at(variable));
        }
    }
    file_.Put("$end\n");
    file_.Flush();
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
    PutText(ConsoleLine, shown_);
    if (console_.StepText() != stepName_) {
        stepName_ = console_.StepText();
        PutText(StepName, stepName_);
    }
    Set(StepNumber, console_.StepNumber());
    Set(MeasurementCount, static_cast<double>(console_.Measurements()));
}

void Waveform::ShowFault(std::string_view call, std::string_view path, const std::string& what) {
    Stamp(); // first: the pulse before may end with it
    SetLevel(Fault, true);
    Set(FaultCount, values_[FaultCount] + 1.0);
    PutText(FaultCall, std::string(call) + " " + std::string(path) + " " + what);
    faultEnds_ = stamped_ + 1;
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
        return at.output ? static_cast<double>(at.level) : kUndriven;
    };
    const PwmChip& channels = board_.pwm;
    SetLevel(LightOn, channels.At(kLampChannel).Pulsing());
    Set(LightDuty, DutyPercent(channels.At(kLampChannel)));
    SetLevel(ValveOpen, board_.ValveOpen());
    Set(ValveDuty, DutyPercent(channels.At(kValveChannel)));
    Set(StirrerEnable, level(kStirrerEnableLine));
    SetLevel(Stirring, board_.Stirring());
    Set(StirrerFrequency, Frequency(channels.At(kStirrerChannel)));
    Set(PumpEnable, level(kPumpEnableLine));
    Set(PumpDirection, level(kPumpDirectionLine));
    for (std::size_t bit = 0; bit < kPumpCurrentLines.size(); ++bit) {
        Set(PumpCurrent0 + bit, level(kPumpCurrentLines.at(bit)));
    }
    Set(PumpFrequency, Frequency(channels.At(kPumpChannel)));
    NoteShaft(board_.Now());
}

void Waveform::NoteShaft(Nanoseconds now) {
    constexpr double degrees = 360.0 / PumpShaft::kStepsPerTurn;
    const double angle = degrees * static_cast<double>(board_.shaft.StepOfTurn(now));
    if (angle != values_[ShaftAngle]) {
        Change(ShaftAngle, angle, now);
    }
}

void Waveform::NoteWorld() {
    if (board_.shaft.OnFlag(board_.Now()) != (values_[Flag] != 0.0)) {
        Set(Flag, 1.0 - values_[Flag]);
        NoteShaft(board_.Now());
    }
    SetLevel(HomeSensor, board_.lines.At(kHomeSensorLine).level);
    SetLevel(CardPresent, board_.card.present);
    SetLevel(CardMounted, board_.card.mounted);
    Set(CardBytes, static_cast<double>(board_.card.Written()));
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
    PutValue(variable, value);
}

void Waveform::PutValue(std::size_t variable, double value) {
    char line[48];
    char* end = line;
    if (kDeclarations.at(variable).type == kWire) {
        *end++ = value == kUndriven ? 'z' : value != 0.0 ? '1' : '0';
    } else {
        *end++ = 'r';
        end = std::to_chars(end, line + sizeof line - 3, value, std::chars_format::general, 12).ptr;
        *end++ = ' ';
    }
    *end++ = kIdentifiers[variable];
    *end++ = '\n';
    file_.Put({line, static_cast<std::size_t>(end - line)});
}

void Waveform::PutText(std::size_t variable, std::string_view text) {
    file_.Put("s" + Escaped(text) + " " + kIdentifiers[variable] + "\n");
}

void Waveform::Stamp(Nanoseconds moment) {
    const Nanoseconds now = moment / Microseconds(1);
    const auto put = [this](Nanoseconds time) {
        if (time > stamped_) {
            stamped_ = time;
            file_.Put("#" + std::to_string(time) + "\n");
        }
    };
    if (faultEnds_ >= 0 && faultEnds_ <= now) {
        put(std::exchange(faultEnds_, -1));
        values_[Fault] = 0.0;
        PutValue(Fault, 0.0);
    }
    put(now);
}

} // namespace sim
