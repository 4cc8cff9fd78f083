// Scenario files: what each key sets, and what is kept when it is not there.

#include "simulator/scenario/ScenarioFile.h"

#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::ParseScenario;
using sim::Scenario;
using sim::ScenarioError;
using sim::Seconds;
using sim::WorldEvent;

Scenario Parse(const std::string& toml) {
    auto read = ParseScenario(toml, "test.toml");
    if (const auto* error = std::get_if<ScenarioError>(&read)) {
        ADD_FAILURE() << error->text;
        return {};
    }
    return std::get<Scenario>(read);
}

TEST(Scenario, OfNothingIsTheBoardAsItShouldBe) {
    const Scenario scenario = Parse("");
    EXPECT_EQ(scenario.absorbances, std::vector<double>{0.25});
    EXPECT_EQ(scenario.darkCount, 20'000);
    EXPECT_EQ(scenario.referenceCount, 3'000'000);
    EXPECT_EQ(scenario.noise, 0.0);
    EXPECT_TRUE(scenario.boardPresent && scenario.flagSeen && scenario.cardPresent);
    EXPECT_TRUE(scenario.cardPartitioned && scenario.cardFat && scenario.mountPointExists);
    EXPECT_TRUE(scenario.mountTableExists);
    EXPECT_FALSE(scenario.startOnFlag || scenario.cardMounted || scenario.cardReadOnly);
    EXPECT_FALSE(scenario.cardWriteProtected);
    EXPECT_EQ(scenario.cardFreeBytes, -1);
    EXPECT_EQ(scenario.threadOrder, sim::ThreadOrder::Arrival);
    EXPECT_TRUE(scenario.events.empty() && scenario.faults.empty() && scenario.missing.empty());
}

TEST(Scenario, SetsSampleAndDetector) {
    const Scenario scenario = Parse("sample.absorbance = [0.1, 1, 2.5e-1]\n"
                                    "[detector]\n"
                                    "dark = -5\n"
                                    "reference = 16777215\n"
                                    "noise = 12\n"
                                    "[converter]\n"
                                    "words = [0xA0800000, 0, 4294967295]\n");
    EXPECT_EQ(scenario.absorbances, (std::vector<double>{0.1, 1.0, 0.25}));
    EXPECT_EQ(scenario.darkCount, -5);
    EXPECT_EQ(scenario.referenceCount, 16'777'215);
    EXPECT_EQ(scenario.noise, 12.0);
    EXPECT_EQ(scenario.converterWords, (std::vector<std::uint32_t>{0xA0800000, 0, 0xFFFFFFFF}));
    EXPECT_EQ(Parse("sample.absorbance = 0.5").absorbances, std::vector<double>{0.5});
}

TEST(Scenario, SetsTheCard) {
    const Scenario scenario = Parse("[card]\n"
                                    "present = false\n"
                                    "partition = false\n"
                                    "fat = false\n"
                                    "write_protected = true\n"
                                    "read_only = true\n"
                                    "mount_point = false\n"
                                    "free_bytes = 4096\n");
    EXPECT_FALSE(scenario.cardPresent || scenario.cardPartitioned || scenario.cardFat);
    EXPECT_FALSE(scenario.mountPointExists);
    EXPECT_TRUE(scenario.cardWriteProtected && scenario.cardReadOnly);
    EXPECT_EQ(scenario.cardFreeBytes, 4096);
    EXPECT_TRUE(Parse("card.mounted = true").cardMounted);
}

TEST(Scenario, SetsPumpBoardAndThreads) {
    const Scenario scenario = Parse("pump.flag_seen = false\n"
                                    "pump.on_flag_at_start = true\n"
                                    "threads.order = \"seeded\"\n"
                                    "[board]\n"
                                    "present = false\n"
                                    "missing = [\"/sys/class/gpio/export\"]\n");
    EXPECT_FALSE(scenario.flagSeen || scenario.boardPresent);
    EXPECT_TRUE(scenario.startOnFlag);
    EXPECT_EQ(scenario.threadOrder, sim::ThreadOrder::Seeded);
    EXPECT_EQ(scenario.missing, std::set<std::string>{"/sys/class/gpio/export"});
}

TEST(Scenario, SetsLinesChannelsAndAttributes) {
    const Scenario scenario = Parse("lines.exported = [\"B15\", \"D31\"]\n"
                                    "lines.high = [\"A0\"]\n"
                                    "channels.exported = [0, 3]\n"
                                    "[attributes]\n"
                                    "\"/sys/class/pwm/pwmchip0/npwm\" = \"\\u00ff\\n\"\n");
    EXPECT_EQ(scenario.exportedLines, (std::vector<std::string>{"B15", "D31"}));
    EXPECT_EQ(scenario.highInputs, std::vector<std::string>{"A0"});
    EXPECT_EQ(scenario.exportedChannels, (std::vector<unsigned>{0, 3}));
    EXPECT_EQ(scenario.attributes.at("/sys/class/pwm/pwmchip0/npwm"), "\xc3\xbf\n");
}

TEST(Scenario, SetsTheAnalogSideAndTheMountTable) {
    const Scenario scenario = Parse("indicator.cable_length = 7.5\n"
                                    "indicator.lamp_voltage = 3.9\n"
                                    "adc.scale = \"rubbish\"\n"
                                    "adc.input = [{number = 11, volts = 1.5}]\n"
                                    "mount_table.present = false\n"
                                    "mount_table.lines = [\"a /b c d 0 0\"]\n"
                                    "[[file_system]]\n"
                                    "directory = \"/b\"\n"
                                    "block_size = 512\n"
                                    "blocks = 100\n"
                                    "free = 50\n"
                                    "available = 40\n");
    EXPECT_EQ(scenario.cableLength, 7.5);
    EXPECT_EQ(scenario.lampVoltage, 3.9);
    EXPECT_EQ(scenario.adcScale, "rubbish");
    EXPECT_EQ(scenario.adcInputs, (std::map<int, double>{{11, 1.5}}));
    EXPECT_FALSE(scenario.mountTableExists);
    EXPECT_EQ(scenario.mountTable, std::vector<std::string>{"a /b c d 0 0"});
    ASSERT_EQ(scenario.fileSystems.size(), 1U);
    EXPECT_EQ(scenario.fileSystems[0].directory, "/b");
    EXPECT_EQ(scenario.fileSystems[0].blockSize, 512);
    EXPECT_EQ(scenario.fileSystems[0].blocks, 100U);
    EXPECT_EQ(scenario.fileSystems[0].freeBlocks, 50U);
    EXPECT_EQ(scenario.fileSystems[0].availableBlocks, 40U);
}

TEST(Scenario, OrdersWhatBefallsTheBoardByTime) {
    const Scenario scenario = Parse("[[lines.event]]\nat = 4\nline = \"B18\"\nlevel = 1\n"
                                    "[[card.event]]\nat = 2.5\ndo = \"remove\"\n"
                                    "[[card.event]]\nat = 3\ndo = \"insert\"\n"
                                    "[[clock.jump]]\nat = 0.0000005\nseconds = -3600\n");
    ASSERT_EQ(scenario.events.size(), 4U);
    EXPECT_EQ(scenario.events[0].kind, WorldEvent::Kind::JumpClock);
    EXPECT_EQ(scenario.events[0].at, sim::Microseconds(1)) << "to the nearest microsecond";
    EXPECT_EQ(scenario.events[0].value, -3600);
    EXPECT_EQ(scenario.events[1].kind, WorldEvent::Kind::RemoveCard);
    EXPECT_EQ(scenario.events[1].at, sim::Milliseconds(2500));
    EXPECT_EQ(scenario.events[2].kind, WorldEvent::Kind::InsertCard);
    EXPECT_EQ(scenario.events[3].kind, WorldEvent::Kind::SetInput);
    EXPECT_EQ(scenario.events[3].line, 50U);
    EXPECT_EQ(scenario.events[3].value, 1);
}

TEST(Scenario, SetsFaults) {
    const Scenario scenario = Parse("[[fault]]\n"
                                    "call = \"open\"\n"
                                    "path = \"/sys/class/gpio/*\"\n"
                                    "occurrence = 3\n"
                                    "errno = \"EACCES\"\n"
                                    "repeat = \"forever\"\n"
                                    "[[fault]]\n"
                                    "call = \"write\"\n"
                                    "bytes = 2\n");
    ASSERT_EQ(scenario.faults.size(), 2U);
    EXPECT_EQ(scenario.faults[0].call, "open");
    EXPECT_EQ(scenario.faults[0].path, "/sys/class/gpio/*");
    EXPECT_EQ(scenario.faults[0].occurrence, 3U);
    EXPECT_EQ(scenario.faults[0].error, EACCES);
    EXPECT_TRUE(scenario.faults[0].forever);
    EXPECT_EQ(scenario.faults[1].occurrence, 1U);
    EXPECT_EQ(scenario.faults[1].error, 0);
    EXPECT_EQ(scenario.faults[1].bytes, 2U);
    EXPECT_FALSE(scenario.faults[1].forever);
}

TEST(ScenarioText, IsReadWhole) {
    const TemporaryFolder folder;
    const std::string text = "# " + std::string(100'000, 'x') + "\n";
    WriteText(folder.File("board.toml"), text);
    EXPECT_EQ(std::get<std::string>(sim::ReadScenarioText(folder.File("board.toml"))), text);
}

TEST(ScenarioText, CannotBeReadFromAFolderOrFromNowhere) {
    for (const std::string path : {"/tmp", "/nowhere/board.toml"}) {
        EXPECT_EQ(std::get<ScenarioError>(sim::ReadScenarioText(path)).text,
                  path + ": cannot be read; takes a file in TOML");
    }
}

} // namespace
} // namespace tavrelin
