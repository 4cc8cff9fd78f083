// Every wrong scenario is refused with its line, its key, what is wrong and what would do.

#include "simulator/scenario/ScenarioFile.h"

#include "tests/simulator/Launcher.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Text.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

/// "LINE: KEY: what is wrong", or nothing for a scenario that is right.
std::string ErrorOf(const std::string& toml) {
    const auto read = sim::ParseScenario(toml, "b");
    const auto* error = std::get_if<sim::ScenarioError>(&read);
    return error != nullptr ? error->text.substr(2) : "";
}

struct WrongValue {
    const char* key;
    const char* value;
    const char* takes;
};

class WrongScenarioValue : public testing::TestWithParam<WrongValue> {};

TEST_P(WrongScenarioValue, IsRefused) {
    const WrongValue& wrong = GetParam();
    EXPECT_EQ(ErrorOf(std::string("\n\n") + wrong.key + " = " + wrong.value),
              std::string("3: ") + wrong.key + ": " + wrong.takes);
}

constexpr const char* kYesOrNo = "takes true or false";
constexpr const char* kCounts = "takes a whole number from -16777216 to 16777215";
constexpr const char* kAbsorbances = "takes a number from -2 to 6";
constexpr const char* kWords = "takes a whole number from 0 to 4294967295";
constexpr const char* kTexts = "takes a list of texts in quotes";
constexpr const char* kList = "takes a list in brackets";

INSTANTIATE_TEST_SUITE_P(Booleans, WrongScenarioValue,
                         testing::Values(WrongValue{"card.present", "1", kYesOrNo},
                                         WrongValue{"card.mounted", "\"yes\"", kYesOrNo},
                                         WrongValue{"card.partition", "0.0", kYesOrNo},
                                         WrongValue{"card.fat", "[]", kYesOrNo},
                                         WrongValue{"card.write_protected", "1", kYesOrNo},
                                         WrongValue{"card.read_only", "1", kYesOrNo},
                                         WrongValue{"card.mount_point", "1", kYesOrNo},
                                         WrongValue{"pump.flag_seen", "1", kYesOrNo},
                                         WrongValue{"pump.on_flag_at_start", "1", kYesOrNo},
                                         WrongValue{"board.present", "1", kYesOrNo},
                                         WrongValue{"mount_table.present", "1", kYesOrNo}));

INSTANTIATE_TEST_SUITE_P(
    Numbers, WrongScenarioValue,
    testing::Values(WrongValue{"sample.absorbance", "6.01", kAbsorbances},
                    WrongValue{"sample.absorbance", "[0.1, -2.5]", kAbsorbances},
                    WrongValue{"sample.absorbance", "nan", kAbsorbances},
                    WrongValue{"sample.absorbance", "\"0.5\"", kAbsorbances},
                    WrongValue{"sample.absorbance", "[]", "takes at least one number"},
                    WrongValue{"detector.dark", "16777216", kCounts},
                    WrongValue{"detector.dark", "1.5", kCounts},
                    WrongValue{"detector.reference", "-16777217", kCounts},
                    WrongValue{"detector.noise", "-1", "takes a number from 0 to 10000000"},
                    WrongValue{"detector.noise", "inf", "takes a number from 0 to 10000000"},
                    WrongValue{"card.free_bytes", "-1",
                               "takes a whole number from 0 to 1125899906842624"},
                    WrongValue{"indicator.cable_length", "-1", "takes a number from 0 to 1000000"},
                    WrongValue{"indicator.lamp_voltage", "101", "takes a number from -100 to 100"},
                    WrongValue{"converter.words", "[-1]", kWords},
                    WrongValue{"converter.words", "[4294967296]", kWords},
                    WrongValue{"converter.words", "7", kList},
                    WrongValue{"channels.exported", "[4]", "takes a whole number from 0 to 3"},
                    WrongValue{"channels.exported", "[true]", "takes a whole number from 0 to 3"}));

INSTANTIATE_TEST_SUITE_P(
    Texts, WrongScenarioValue,
    testing::Values(
        WrongValue{"lines.exported", "[\"B32\"]", "no line is named \"B32\"; lines are A0 to D31"},
        WrongValue{"lines.exported", "[\"B07\"]", "no line is named \"B07\"; lines are A0 to D31"},
        WrongValue{"lines.high", "[\"E0\"]", "no line is named \"E0\"; lines are A0 to D31"},
        WrongValue{"lines.high", "[7]", kTexts}, WrongValue{"lines.high", "\"A0\"", kList},
        WrongValue{"mount_table.lines", "[1]", kTexts},
        WrongValue{"adc.scale", "0.0001", "takes a text in quotes"},
        WrongValue{"threads.order", "\"random\"", "takes \"arrival\" or \"seeded\""},
        WrongValue{"threads.order", "1", "takes a text in quotes"},
        WrongValue{"board.missing", "[\"/sys/class/leds\"]",
                   "\"/sys/class/leds\" is no path of the board; takes one such as "
                   "\"/sys/class/gpio/pioB18/value\""},
        WrongValue{"board.missing", "[\"/dev/../dev/mem\"]",
                   "\"/dev/../dev/mem\" is no path of the board; takes one such as "
                   "\"/sys/class/gpio/pioB18/value\""}));

INSTANTIATE_TEST_SUITE_P(
    Tables, WrongScenarioValue,
    testing::Values(WrongValue{"card", "true", "is a table: [card]"},
                    WrongValue{"attributes", "[]", "is a table: [attributes]"},
                    WrongValue{"fault", "\"open\"", "is a list of tables: [[fault]]"},
                    WrongValue{"card.event", "[1]", "is a list of tables: [[card.event]]"}));

/// A fault or event of an otherwise right table with one line that is wrong or missing.
struct WrongTable {
    const char* toml;
    const char* error;
};

class WrongScenarioTable : public testing::TestWithParam<WrongTable> {};

TEST_P(WrongScenarioTable, IsRefused) {
    EXPECT_EQ(ErrorOf(GetParam().toml), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    Events, WrongScenarioTable,
    testing::Values(
        WrongTable{"[[card.event]]\ndo = 'insert'", "1: card.event.at: is missing"},
        WrongTable{"[[card.event]]\nat = 1", "1: card.event.do: is missing"},
        WrongTable{"[[card.event]]\nat = 1\ndo = 'pull'",
                   "3: card.event.do: takes \"insert\" or \"remove\""},
        WrongTable{"[[card.event]]\nat = -1\ndo = 'insert'",
                   "2: card.event.at: takes a number from 0 to 1000000000"},
        WrongTable{"[[clock.jump]]\nat = 1", "1: clock.jump.seconds: is missing"},
        WrongTable{"[[clock.jump]]\nat = 1\nseconds = 0.5",
                   "3: clock.jump.seconds: takes a whole number from -2000000000 to 2000000000"},
        WrongTable{"[[clock.jump]]\nat = '1'\nseconds = 5",
                   "2: clock.jump.at: takes a number from 0 to 1000000000"},
        WrongTable{"[[lines.event]]\nat = 1\nlevel = 1", "1: lines.event.line: is missing"},
        WrongTable{"[[lines.event]]\nat = 1\nline = 'B18'", "1: lines.event.level: is missing"},
        WrongTable{"[[lines.event]]\nat = 1\nline = 'B18'\nlevel = 2",
                   "4: lines.event.level: takes a whole number from 0 to 1"},
        WrongTable{"[[lines.event]]\nat = 1\nline = 'Z1'\nlevel = 1",
                   "3: lines.event.line: no line is named \"Z1\"; lines are A0 to D31"},
        WrongTable{"[[adc.input]]\nvolts = 1", "1: adc.input.number: is missing"},
        WrongTable{"[[adc.input]]\nnumber = 3", "1: adc.input.volts: is missing"},
        WrongTable{"[[adc.input]]\nnumber = 12\nvolts = 1",
                   "2: adc.input.number: takes a whole number from 0 to 11"},
        WrongTable{"[[file_system]]\nblocks = 1", "1: file_system.directory: is missing"},
        WrongTable{"[[file_system]]\ndirectory = '/a'\nfree = -1",
                   "3: file_system.free: takes a whole number from 0 to 1152921504606846976"}));

constexpr const char* kNoBoardPath =
    "3: fault.path: no path of the board; takes one such as \"/sys/class/gpio/export\" or, for all "
    "that begin so, \"/sys/class/gpio/*\"";

INSTANTIATE_TEST_SUITE_P(
    Faults, WrongScenarioTable,
    testing::Values(
        WrongTable{"[[fault]]\nerrno = 'EIO'", "1: fault.call: is missing"},
        WrongTable{"[[fault]]\ncall = 'open'",
                   "1: fault.errno: a fault has either an errno or bytes"},
        WrongTable{"[[fault]]\ncall = 'write'\nerrno = 'EIO'\nbytes = 1",
                   "3: fault.errno: a fault has either an errno or bytes"},
        WrongTable{"[[fault]]\ncall = 'open'\nbytes = 1",
                   "3: fault.bytes: goes with the calls read and write only"},
        WrongTable{"[[fault]]\ncall = 'open'\nerrno = 'EFOO'",
                   "3: fault.errno: unknown name \"EFOO\"; takes one such as \"EACCES\""},
        WrongTable{"[[fault]]\ncall = 'open'\nerrno = 13",
                   "3: fault.errno: takes a text in quotes"},
        WrongTable{"[[fault]]\ncall = 'open'\nerrno = 'EIO'\noccurrence = 0",
                   "4: fault.occurrence: takes a whole number from 1 to 1000000000"},
        WrongTable{"[[fault]]\ncall = 'open'\nerrno = 'EIO'\nrepeat = 'twice'",
                   "4: fault.repeat: takes \"once\" or \"forever\""},
        WrongTable{"[[fault]]\ncall = 'open'\npath = '/sys/class/gpoi/export'\nerrno = 'EIO'",
                   kNoBoardPath},
        WrongTable{"[[fault]]\ncall = 'open'\npath = '/sys/class/gpoi/*'\nerrno = 'EIO'",
                   kNoBoardPath},
        WrongTable{"[[fault]]\ncall = 'open'\npath = '/sys//class/gpio/*'\nerrno = 'EIO'",
                   kNoBoardPath},
        WrongTable{"[[fault]]\ncall = 'pthread_create'\npath = '/dev/mem'\nerrno = 'EIO'",
                   "3: fault.path: the call pthread_create has no path"}));

TEST(WrongScenario, NamesTheKnownCalls) {
    EXPECT_EQ(
        ErrorOf("[[fault]]\ncall = 'opne'\nerrno = 'EIO'"),
        "2: fault.call: unknown call; known: access, clock_gettime, close, fork, ioctl, kill, "
        "lseek, lstat, mkdir, mmap, mount, nanosleep, open, poll, pthread_create, "
        "pthread_join, pthread_mutex_init, pthread_mutex_lock, pthread_mutex_unlock, read, "
        "setmntent, stat, statfs, system, umount, write");
}

TEST(WrongScenario, AFaultMayMeetAllPathsThatBeginAlike) {
    for (const char* path : {"/sys/class/gpio/*", "/sys/class/g*", "/dev/*", "/*"}) {
        EXPECT_EQ(
            ErrorOf("[[fault]]\ncall = 'open'\nerrno = 'EIO'\npath = '" + std::string(path) + "'"),
            "")
            << path;
    }
}

TEST(WrongScenario, UnknownKeysAreRefusedWithTheKnownOnes) {
    EXPECT_EQ(ErrorOf("\n[pump]\nflag = false"),
              "3: pump.flag: unknown key; known here: flag_seen, on_flag_at_start");
    EXPECT_EQ(ErrorOf("[pumps]\n"),
              "1: pumps: unknown key; known here: adc, attributes, board, card, channels, clock, "
              "converter, detector, fault, file_system, indicator, lines, mount_table, pump, "
              "sample, threads");
    EXPECT_EQ(ErrorOf("[[fault]]\ncall = 'open'\nerrno = 'EIO'\nonce = true"),
              "4: fault.once: unknown key; known here: bytes, call, errno, occurrence, path, "
              "repeat");
    for (const char* table : {"board", "sample", "detector", "card", "clock", "lines", "threads",
                              "mount_table", "indicator", "adc", "converter", "channels"}) {
        const std::string error = ErrorOf(std::string(table) + ".unknown = 1");
        EXPECT_EQ(error.find(std::string("1: ") + table + ".unknown: unknown key; known here: "),
                  0U)
            << error;
    }
    for (const char* table :
         {"card.event", "clock.jump", "lines.event", "adc.input", "file_system"}) {
        const std::string error =
            ErrorOf(std::string("[[") + table +
                    "]]\nat = 1\ndo = 'insert'\nseconds = 1\nline = 'A0'\nlevel = 1\nnumber = 1\n"
                    "volts = 1\ndirectory = '/'\nunknown = 1");
        EXPECT_TRUE(Contains(error, "unknown key; known here: ")) << error;
    }
}

TEST(WrongScenario, AttributesAreTextsOfTheKernelsFiles) {
    EXPECT_EQ(ErrorOf("[attributes]\n'/sys/class/gpio/pioB18/value' = 1"),
              "2: attributes./sys/class/gpio/pioB18/value: takes a text in quotes");
    EXPECT_EQ(ErrorOf("[attributes]\n'/etc/mtab' = ''"),
              "2: attributes./etc/mtab: \"/etc/mtab\" is no path of the board; takes one such as "
              "\"/sys/class/gpio/pioB18/value\"");
}

TEST(WrongScenario, AMountedCardCanBeMounted) {
    const std::string error = "card.mounted: a mounted card is present, has a partition with a FAT "
                              "file system, and a mount point";
    for (const char* lack : {"present", "partition", "fat", "mount_point"}) {
        EXPECT_EQ(ErrorOf("card.mounted = true\ncard." + std::string(lack) + " = false"),
                  "1: " + error);
    }
}

TEST(WrongScenario, TomlThatIsNoneIsRefusedWithItsLine) {
    EXPECT_EQ(ErrorOf("\n\n[card\n").substr(0, 3), "3: ");
    EXPECT_EQ(ErrorOf("card.present = true\ncard.present = false").substr(0, 3), "2: ");
    EXPECT_EQ(ErrorOf("a = \"\xff\"").substr(0, 3), "1: ");
    EXPECT_NE(ErrorOf(std::string("a\0b", 3)), "");
}

TEST(WrongScenario, OnlyTheFirstErrorIsTold) {
    EXPECT_EQ(ErrorOf("card.present = 1\ncard.fat = 1"), "1: card.present: takes true or false");
}

TEST(WrongScenario, EndsTheLauncherWithFileLineAndKey) {
    const TemporaryFolder folder;
    const std::string file = folder.File("board.toml");
    WriteText(file, "[pump]\nflag_seen = 3\n");
    const CommandResult run = SimulateTrouble({"speak"}, {"--scenario", file});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.error, "simulate: " + file + ":2: pump.flag_seen: takes true or false\n");
    EXPECT_EQ(run.output, "");
    const CommandResult none = SimulateTrouble({"speak"}, {"--scenario", "/nowhere.toml"});
    EXPECT_EQ(none.status, 3);
    EXPECT_EQ(none.error, "simulate: /nowhere.toml: cannot be read; takes a file in TOML\n");
}

TEST(Scenario, MayComeThroughAPipe) {
    const std::string command = "echo 'fault = [{call = \"nanosleep\", errno = \"EINTR\"}]' | " +
                                Binary("simulate") +
                                " --scenario /dev/stdin --events /dev/stderr -- " +
                                testProgram("troublemaker") + " sleep 10";
    const CommandResult run = RunCommand({"sh", "-c", command});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.error, "0 1 nanosleep - EINTR\n0 1 sleep - 5000 us\n");
}

} // namespace
} // namespace tavrelin
