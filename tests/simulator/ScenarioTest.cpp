// Scenario files: what each key sets, and what is kept when it is not there.

#include "simulator/scenario/ScenarioFile.h"

#include "tests/support/TestFolder.h"

#include <cerrno>
#include <gmock/gmock.h>
#include <tuple>

namespace tavrelin {
namespace {

using sim::ParseScenario;
using sim::Scenario;
using sim::ScenarioError;
using testing::ElementsAre;
using Kind = sim::WorldEvent::Kind;

Scenario Parse(const std::string& toml) {
    auto read = ParseScenario(toml, "test.toml");
    if (const auto* error = std::get_if<ScenarioError>(&read)) {
        ADD_FAILURE() << error->text;
        return {};
    }
    return std::get<Scenario>(read);
}

TEST(Scenario, OfNothingIsTheBoardAsItShouldBe) {
    const auto [board, kernel, threads, stacks, zone] = Parse("");
    EXPECT_THAT(board.absorbances, ElementsAre(0.25));
    EXPECT_EQ(board.detector.dark, 20'000);
    EXPECT_EQ(board.detector.reference, 3'000'000);
    EXPECT_EQ(board.detector.noise, 0.0);
    EXPECT_TRUE(board.present && board.pump.flagSeen && board.card.present);
    EXPECT_TRUE(board.card.partitioned && board.card.fat && board.card.mountPointExists);
    EXPECT_TRUE(kernel.mounts.tablePresent);
    EXPECT_FALSE(board.pump.onFlag || board.card.mounted || board.card.readOnly);
    EXPECT_FALSE(board.card.writeProtected);
    EXPECT_EQ(board.card.freeBytes, -1);
    EXPECT_EQ(threads.order, sim::ThreadOrder::Arrival);
    EXPECT_TRUE(board.events.empty() && kernel.faults.empty() && kernel.paths.missing.empty());
}

TEST(Scenario, SetsSampleAndDetector) {
    const sim::BoardSetup board = Parse(R"(sample.absorbance = [0.1, 1, 2.5e-1]
[detector]
dark = -5
reference = 16777215
noise = 12
[converter]
words = [0xA0800000, 0, 4294967295])")
                                      .board;
    EXPECT_THAT(board.absorbances, ElementsAre(0.1, 1.0, 0.25));
    EXPECT_EQ(board.detector.dark, -5);
    EXPECT_EQ(board.detector.reference, 16'777'215);
    EXPECT_EQ(board.detector.noise, 12.0);
    EXPECT_THAT(board.converterWords, ElementsAre(0xA0800000, 0, 0xFFFFFFFF));
    EXPECT_THAT(Parse("sample.absorbance = 0.5").board.absorbances, ElementsAre(0.5));
}

TEST(Scenario, SetsTheCard) {
    const sim::CardState card = Parse(R"([card]
present = false
partition = false
fat = false
write_protected = true
read_only = true
mount_point = false
free_bytes = 4096)")
                                    .board.card;
    EXPECT_FALSE(card.present || card.partitioned || card.fat || card.mountPointExists);
    EXPECT_TRUE(card.writeProtected && card.readOnly);
    EXPECT_EQ(card.freeBytes, 4096);
    EXPECT_TRUE(Parse("card.mounted = true").board.card.mounted);
}

TEST(Scenario, SetsPumpBoardAndThreads) {
    const auto [board, kernel, threads, stacks, zone] = Parse(R"(pump.flag_seen = false
pump.on_flag_at_start = true
threads.order = "seeded"
[board]
present = false
missing = ["/sys/class/gpio/export"])");
    EXPECT_FALSE(board.pump.flagSeen || board.present);
    EXPECT_TRUE(board.pump.onFlag);
    EXPECT_EQ(threads.order, sim::ThreadOrder::Seeded);
    EXPECT_THAT(kernel.paths.missing, ElementsAre("/sys/class/gpio/export"));
}

TEST(Scenario, SetsAGivenOrder) {
    const sim::ThreadSetup threads = Parse(R"([threads]
order = "given"
preempt = [17, 23]
io = "parallel"
console = true)")
                                         .threads;
    EXPECT_EQ(threads.order, sim::ThreadOrder::Given);
    EXPECT_THAT(threads.preempt, ElementsAre(17U, 23U));
    EXPECT_TRUE(threads.ioParallel && threads.console);
}

TEST(Scenario, SetsLinesChannelsAndAttributes) {
    const auto [board, kernel, threads, stacks, zone] = Parse(R"(lines.exported = ["B15", "D31"]
lines.high = ["A0"]
channels.exported = [0, 3]
channels.enabled = [3]
[attributes]
"/sys/class/pwm/pwmchip0/npwm" = "\u00ff\n")");
    EXPECT_THAT(board.lines.exported, ElementsAre("B15", "D31"));
    EXPECT_THAT(board.lines.high, ElementsAre("A0"));
    EXPECT_THAT(board.channels.exported, ElementsAre(0U, 3U));
    EXPECT_THAT(board.channels.enabled, ElementsAre(3U));
    EXPECT_THAT(kernel.paths.replaced,
                ElementsAre(std::pair("/sys/class/pwm/pwmchip0/npwm", "\xc3\xbf\n")));
}

TEST(Scenario, SetsTheAnalogSideAndTheMountTable) {
    const auto [board, kernel, threads, stacks, zone] = Parse(R"(indicator.cable_length = 7.5
indicator.lamp_voltage = 3.9
adc.scale = "rubbish"
adc.input = [{number = 11, volts = 1.5}]
mount_table.present = false
mount_table.lines = ["a /b c d 0 0"]
[[file_system]]
directory = "/b"
block_size = 512
blocks = 100
free = 50
available = 40)");
    EXPECT_EQ(board.analog.cableLength, 7.5);
    EXPECT_EQ(board.analog.lampVoltage, 3.9);
    EXPECT_EQ(board.analog.scale, "rubbish");
    EXPECT_THAT(board.analog.direct, ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1.5));
    EXPECT_FALSE(kernel.mounts.tablePresent);
    EXPECT_THAT(kernel.mounts.lines, ElementsAre("a /b c d 0 0"));
    ASSERT_EQ(kernel.mounts.fileSystems.size(), 1U);
    const auto& [directory, size, blocks, free, available] = kernel.mounts.fileSystems[0];
    EXPECT_EQ(std::tuple(directory, size, blocks, free, available),
              std::tuple("/b", 512, 100U, 50U, 40U));
}

TEST(Scenario, OrdersWhatBefallsTheBoardByTime) {
    const Scenario scenario = Parse("[[lines.event]]\nat = 4\nline = \"B18\"\nlevel = 1\n"
                                    "[[card.event]]\nat = 2.5\ndo = \"remove\"\n"
                                    "[[card.event]]\nat = 3\ndo = \"insert\"\n"
                                    "[[clock.jump]]\nat = 0.0000005\nseconds = -3600\n");
    std::vector<std::tuple<sim::Nanoseconds, Kind, std::int64_t, unsigned>> events;
    for (const sim::WorldEvent& event : scenario.board.events) {
        events.emplace_back(event.at, event.kind, event.value, event.line);
    }
    EXPECT_THAT(events, ElementsAre(std::tuple(sim::Microseconds(1), Kind::JumpClock, -3600, 0),
                                    std::tuple(sim::Milliseconds(2500), Kind::RemoveCard, 0, 0),
                                    std::tuple(sim::Seconds(3), Kind::InsertCard, 0, 0),
                                    std::tuple(sim::Seconds(4), Kind::SetInput, 1, 50U)))
        << "to the nearest microsecond";
}

TEST(Scenario, LetsAHandMeddleWithSampleDetectorCardAndFlag) {
    const std::vector<sim::WorldEvent> events =
        Parse("[[sample.event]]\nat = 1\nabsorbance = 0.8\n"
              "[[detector.event]]\nat = 2\nnoise = 12.5\n"
              "[[card.event]]\nat = 3\ndo = 'lock'\n[[card.event]]\nat = 4\ndo = 'unlock'\n"
              "[[pump.event]]\nat = 5\nflag_seen = false\n"
              "[[pump.event]]\nat = 6\nflag_seen = true\n")
            .board.events;
    std::vector<std::tuple<Kind, double, std::int64_t>> read;
    for (const sim::WorldEvent& event : events) {
        read.emplace_back(event.kind, event.number, event.value);
    }
    EXPECT_THAT(
        read,
        ElementsAre(std::tuple(Kind::SetNextSample, 0.8, 0), std::tuple(Kind::SetNoise, 12.5, 0),
                    std::tuple(Kind::LockCard, 0.0, 0), std::tuple(Kind::UnlockCard, 0.0, 0),
                    std::tuple(Kind::ShowFlag, 0.0, 0), std::tuple(Kind::ShowFlag, 0.0, 1)));
}

TEST(Scenario, SetsFaults) {
    const std::vector<sim::Fault> faults = Parse(R"([[fault]]
call = "open"
path = "/sys/class/gpio/*"
occurrence = 3
errno = "EACCES"
repeat = "forever"
[[fault]]
call = "write"
bytes = 2)")
                                               .kernel.faults;
    ASSERT_EQ(faults.size(), 2U);
    EXPECT_EQ(faults[0].call, "open");
    EXPECT_EQ(faults[0].path, "/sys/class/gpio/*");
    EXPECT_EQ(faults[0].occurrence, 3U);
    EXPECT_EQ(faults[0].error, EACCES);
    EXPECT_TRUE(faults[0].forever);
    EXPECT_EQ(faults[1].occurrence, 1U);
    EXPECT_EQ(faults[1].error, 0);
    EXPECT_EQ(faults[1].bytes, 2U);
    EXPECT_FALSE(faults[1].forever);
}

TEST(ScenarioFile, IsReadWhole) {
    const TestFolder folder;
    const std::string file = folder.Path("board.toml");
    WriteText(file, "# " + std::string(100'000, 'x') + "\ncard.fat = false");
    EXPECT_FALSE(std::get<Scenario>(sim::ReadScenarioFile(file)).board.card.fat);
}

TEST(ScenarioFile, CannotBeReadFromAFolderOrFromNowhere) {
    for (const std::string path : {"/tmp", "/nowhere/board.toml"}) {
        EXPECT_EQ(std::get<ScenarioError>(sim::ReadScenarioFile(path)).text,
                  path + ": cannot be read; takes a file in TOML");
    }
}

} // namespace
} // namespace tavrelin
