#include "simulator/run/ValueChanges.h"

#include <charconv>

namespace sim {
namespace {

struct Declaration {
    const char* scope;
    const char* type;
    const char* name; ///< one of its kind in all scopes: not every reader shows those
};

constexpr const char* kWire = "wire 1";
constexpr const char* kReal = "real 64";
constexpr const char* kText = "string 1";

constexpr std::array<Declaration, ValueChanges::Count> kDeclarations{{
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
static_assert(kIdentifiers.size() >= ValueChanges::Count);

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

void ValueChanges::Begin(const std::string& date, const std::array<double, Count>& values) {
    std::string text = "$date " + date + " UTC on the board's clock $end\n" +
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
            Put(variable, values.at(variable));
        }
    }
    file_.Put("$end\n");
    file_.Flush();
}

void ValueChanges::GoTo(std::int64_t microseconds) {
    if (microseconds > time_) {
        time_ = microseconds;
        file_.Put("#" + std::to_string(time_) + "\n");
    }
}

void ValueChanges::Put(std::size_t variable, double value) {
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

void ValueChanges::PutText(std::size_t variable, std::string_view text) {
    file_.Put("s" + Escaped(text) + " " + kIdentifiers[variable] + "\n");
}

} // namespace sim
