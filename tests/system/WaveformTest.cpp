// The waveforms of a run against its event log: the same edges at the same microseconds.

#include "tests/support/InstrumentRun.h"
#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"
#include "tests/support/ValueChanges.h"
#include "tests/system/EventLog.h"

#include <gmock/gmock.h>

namespace tavrelin {
namespace {

using Edges = std::vector<std::pair<std::int64_t, bool>>;
using Moments = std::vector<std::int64_t>;

struct Recording {
    explicit Recording(Conditions conditions) {
        conditions.waves = true;
        conditions.ioCost = "board"; // every write has a moment of its own
        result = RunInstrument(conditions);
        waves = ReadValueChanges(result.waves);
        events = ParseEvents(result.events);
        EXPECT_EQ(result.status, kEndedAsAsked) << result.errors;
        EXPECT_THAT(waves.problems, testing::IsEmpty());
    }

    /// When an operation of this begin was told that no error ends.
    [[nodiscard]] Moments When(const std::string& begin) const {
        Moments moments;
        for (const BoardEvent& event : events) {
            if (event.what.rfind(begin, 0) == 0 && event.what.back() != 'L') { // EINVAL
                moments.push_back(event.at);
            }
        }
        return moments;
    }

    /// The edges that these operations make of a level.
    [[nodiscard]] Edges EdgesOf(const std::string& up, const std::string& down) const {
        Edges edges;
        for (const BoardEvent& event : events) {
            const bool level = event.what == up;
            if ((level || event.what == down) && level != (!edges.empty() && edges.back().second)) {
                edges.emplace_back(event.at, level);
            }
        }
        return edges;
    }

    [[nodiscard]] std::string Last(const std::string& name) const {
        return waves.values.at(name).back().second;
    }

    RunResult result;
    ValueChanges waves;
    std::vector<BoardEvent> events;
};

const Recording& TwoMeasurements() {
    static const Recording run({.measurements = 2});
    return run;
}

std::string ToAttribute(const std::string& path, int value) {
    return "write /sys/class/" + path + " \"" + std::to_string(value) + "\"";
}

TEST(Waveform, TellsEveryDriverAndItsCurrentAsTheLogDoes) {
    const std::pair<std::string, std::string> lines[]{
        {"pump_enable_n", "A2"},  {"pump_direction", "A3"}, {"pump_current_0", "A4"},
        {"pump_current_1", "A5"}, {"pump_current_2", "A6"}, {"stirrer_enable_n", "B15"}};
    for (const auto& [wire, line] : lines) {
        const std::string value = "gpio/pio" + line + "/value";
        const Edges edges = TwoMeasurements().EdgesOf(ToAttribute(value, 1), ToAttribute(value, 0));
        EXPECT_EQ(TwoMeasurements().waves.Edges(wire), edges) << wire;
        EXPECT_GE(edges.size(), wire == "pump_direction" ? 1U : 3U) << wire;
    }
}

TEST(Waveform, TellsLightAndValveAsTheLogDoes) {
    const std::pair<std::string, std::string> channels[]{{"light", "0"}, {"valve", "3"}};
    for (const auto& [name, channel] : channels) {
        const std::string enable = "pwm/pwmchip0/pwm" + channel + "/enable";
        const std::string wire = name + (name == "light" ? "_on" : "_open");
        const Edges edges =
            TwoMeasurements().EdgesOf(ToAttribute(enable, 1), ToAttribute(enable, 0));
        EXPECT_EQ(TwoMeasurements().waves.Edges(wire), edges);
        EXPECT_GE(edges.size(), 6U);
        const std::string duty = name == "light" ? "30" : "100";
        ValueChanges::Values expected{{0, "0"}};
        for (const auto& [at, on] : edges) {
            expected.emplace_back(at, on ? duty : "0");
        }
        EXPECT_EQ(TwoMeasurements().waves.values.at(name + "_duty"), expected);
    }
}

TEST(Waveform, TellsEveryTransferOfTheConverter) {
    const Recording& run = TwoMeasurements();
    EXPECT_EQ(run.waves.Moments("converting", true), run.When("write /dev/spidev"));
    EXPECT_EQ(run.waves.Moments("converting", false), run.When("read /dev/spidev"));
    EXPECT_GT(run.waves.Moments("converting", true).size(), 60U);
    EXPECT_EQ(run.Last("converter_command"), std::to_string(0xA080));
    for (const BoardEvent& event : run.events) {
        if (event.what.rfind("read /dev/spidev", 0) == 0) {
            const auto word = std::stoul(event.what.substr(event.what.rfind(' ') + 1), nullptr, 16);
            EXPECT_THAT(run.waves.values.at("converter_result"),
                        testing::Contains(testing::Field(&ValueChanges::Values::value_type::second,
                                                         std::to_string(word))));
        }
    }
    EXPECT_THAT(
        run.waves.values.at("converter_count"),
        testing::Contains(testing::Field(&ValueChanges::Values::value_type::second, "3000000")));
}

TEST(Waveform, TellsNegativeReadingsAsSuch) {
    const Recording run({.board = "[converter]\nwords = [0x1FFFFFC0]\n", .steps = 1});
    EXPECT_EQ(run.waves.values.at("converter_count").at(1).second, "-2");
}

TEST(Waveform, TellsShaftFlagAndHomeSensor) {
    const Recording& run = TwoMeasurements();
    const Moments enters = run.When("flag - enters");
    EXPECT_EQ(run.waves.Moments("flag", true), enters);
    EXPECT_EQ(run.waves.Moments("flag", false), run.When("flag - leaves"));
    EXPECT_EQ(run.waves.Moments("home_sensor", false), enters);
    EXPECT_EQ(enters.size(), 5U);
    // The flag's leading edge stands at 270 degrees; the shaft's angle is told every 5 ms.
    const ValueChanges::Values& angles = run.waves.values.at("shaft_angle");
    for (const std::int64_t at : enters) {
        EXPECT_THAT(angles, testing::Contains(testing::Pair(at, "270")));
    }
    EXPECT_EQ(angles.at(2).first - angles.at(1).first, 5'000);
    EXPECT_THAT(
        run.waves.values.at("pump_frequency"),
        testing::Contains(testing::Field(&ValueChanges::Values::value_type::second, "888.889")));
}

TEST(Waveform, TellsTheCardsMountAndBytes) {
    const Recording& run = TwoMeasurements();
    EXPECT_EQ(run.waves.Moments("card_mounted", true), run.When("mount "));
    const ValueChanges::Values& bytes = run.waves.values.at("card_bytes");
    const Moments writes = run.When("write /mnt/sd-card/");
    ASSERT_EQ(bytes.size(), writes.size() + 1);
    for (std::size_t i = 0; i < writes.size(); ++i) {
        EXPECT_EQ(bytes[i + 1].first, writes[i]);
    }
    EXPECT_EQ(bytes.back().second, std::to_string(run.result.Log().size()));
}

TEST(Waveform, TellsACardThatComesAndGoes) {
    const Recording run({.scenario = "card-out-and-in", .boardTime = 16});
    EXPECT_EQ(run.waves.Edges("card_present"), (Edges{{0, true},
                                                      {5'100'000, false},
                                                      {9'300'000, true},
                                                      {12'400'000, false},
                                                      {14'500'000, true}}));
}

TEST(Waveform, TellsStepsMeasurementsAndConsole) {
    const Recording& run = TwoMeasurements();
    const ValueChanges::Values& numbers = run.waves.values.at("step_number");
    ASSERT_EQ(numbers.size(), 1U + 2 * 17);
    EXPECT_EQ(numbers.at(17).second, "17");
    EXPECT_EQ(numbers.at(18).second, "1");
    EXPECT_EQ(run.waves.values.at("step_name").at(1).second, "Priming");
    EXPECT_EQ(run.waves.values.at("step_name").at(2).second, "Verify Flag (Home Poisition)");
    EXPECT_EQ(run.Last("measurement_count"), "2");
    std::string shown;
    std::int64_t moment = -1;
    std::string lines;
    for (const auto& [at, text] : run.waves.values.at("console_line")) {
        lines += at != moment ? shown : "";
        shown = at == 0 ? "" : text + " | ";
        moment = at;
    }
    EXPECT_EQ(lines + shown.substr(0, shown.size() - 1) + "\n", [&] {
        std::string expected;
        for (const std::string& line : LinesOf(run.result.console)) {
            expected += line + " | ";
        }
        return expected.substr(0, expected.size() - 1) + "\n";
    }());
}

TEST(Waveform, TellsEveryFaultAsAPulseOfAMicrosecond) {
    const Recording run(
        {.board = "[[fault]]\ncall = 'read'\npath = '/dev/spidev32765.1'\nerrno = 'EIO'\n"
                  "occurrence = 2\n[[fault]]\ncall = 'write'\noccurrence = 30\n"
                  "bytes = 1\npath = '/sys/class/gpio/*'\n",
         .steps = 3});
    const Moments at = run.waves.Moments("fault", true);
    ASSERT_EQ(at.size(), 2U);
    EXPECT_EQ(at[1], run.When("read /dev/spidev32765.1 EIO").at(0));
    EXPECT_EQ(run.waves.Moments("fault", false), (Moments{at[0] + 1, at[1] + 1}));
    EXPECT_EQ(run.Last("fault_count"), "2");
    EXPECT_EQ(run.Last("fault_call"), "read /dev/spidev32765.1 EIO");
    EXPECT_THAT(run.waves.values.at("fault_call").at(1).second,
                testing::MatchesRegex("write /sys/class/gpio/[A-Za-z0-9/]+ 1 bytes"));
}

TEST(Waveform, TellsFaultsApartBetweenWhichNothingChanges) {
    const Recording run({.board = "[[fault]]\ncall = 'setmntent'\nerrno = 'EACCES'\n"
                                  "repeat = 'forever'\n",
                         .boardTime = 6});
    const Moments faults = run.When("setmntent /etc/mtab EACCES");
    EXPECT_EQ(run.waves.Moments("fault", true), faults);
    EXPECT_GT(faults.size(), 5U);
}

TEST(Waveform, BeginsWithDateScaleAndScopesThatEveryReaderTakes) {
    const ValueChanges& waves = TwoMeasurements().waves;
    EXPECT_EQ(waves.notes.at("$date"), "2026-03-07 09:00:00 UTC on the board's clock");
    EXPECT_EQ(waves.notes.at("$timescale"), "1 us");
    EXPECT_EQ(waves.types.size(), 30U);
    for (const auto& [name, type] : waves.types) {
        EXPECT_THAT(type, testing::AnyOf("wire 1", "real 64", "string 1")) << name;
    }
    EXPECT_EQ(waves.types.at("pump/shaft_angle"), "real 64");
    EXPECT_EQ(waves.types.at("converter/converting"), "wire 1");
}

TEST(Waveform, HasEveryVariableInItsDocumentAndInTheSaveFile) {
    const std::string document = TextOf(InCheckout("docs/simulated-board.md"));
    const std::string saved = TextOf(InCheckout("docs/instrument.gtkw"));
    std::size_t known = 0;
    for (const auto& [name, type] : TwoMeasurements().waves.types) {
        const std::size_t slash = name.find('/');
        const std::string scope = name.substr(0, slash);
        const std::string variable = name.substr(slash + 1);
        EXPECT_THAT(document, testing::HasSubstr("| `" + scope + "` |"));
        EXPECT_THAT(document, testing::HasSubstr("`" + variable + "`"));
        known += saved.find(" board." + scope + "." + variable) != std::string::npos ? 1 : 0;
    }
    std::size_t shown = 0;
    for (std::size_t at = saved.find(" board."); at != std::string::npos;
         at = saved.find(" board.", at + 1)) {
        ++shown;
    }
    EXPECT_EQ(shown, known);
    EXPECT_GT(shown, 20U);
}

TEST(Waveform, EndsWithTheRun) {
    EXPECT_THAT(TwoMeasurements().result.summary,
                testing::HasSubstr(
                    "board_time_us = " + std::to_string(TwoMeasurements().waves.end) + "\n"));
}

TEST(Waveform, ChangesNothingInTheRun) {
    RunResult without = RunInstrument({.measurements = 2, .ioCost = "board"});
    EXPECT_EQ(without.events, TwoMeasurements().result.events);
    EXPECT_EQ(without.console, TwoMeasurements().result.console);
    EXPECT_EQ(without.waves, "");
}

} // namespace
} // namespace tavrelin
