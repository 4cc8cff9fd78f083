// Every wrong scenario is refused with its line, its key, what is wrong and what would do.

#include "simulator/scenario/ScenarioFile.h"

#include "tests/simulator/Launcher.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>
#include <regex>

namespace tavrelin {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

/// "LINE: KEY: what is wrong", or nothing for a scenario that is right.
std::string ErrorOf(const std::string& toml) {
    const auto read = sim::ParseScenario(toml, "b");
    const auto* error = std::get_if<sim::ScenarioError>(&read);
    return error != nullptr ? error->text.substr(2) : "";
}

/// The cells of the rows of a table, separated by " | ".
std::vector<Words> RowsOf(const std::string& table) {
    std::vector<Words> rows;
    for (const std::string& line : LinesOf(table)) {
        rows.push_back(Split(std::regex_replace(line, std::regex(" \\| "), "\t"), '\t'));
    }
    return rows;
}

/// Key, value, what is said of it.
const std::string kWrongValues = R"(card.present | 1 | takes true or false
card.mounted | "yes" | takes true or false
card.partition | 0.0 | takes true or false
card.fat | [] | takes true or false
card.write_protected | 1 | takes true or false
card.read_only | 1 | takes true or false
card.mount_point | 1 | takes true or false
pump.flag_seen | 1 | takes true or false
pump.on_flag_at_start | 1 | takes true or false
board.present | 1 | takes true or false
mount_table.present | 1 | takes true or false
sample.absorbance | 6.01 | takes a number from -2 to 6
sample.absorbance | [0.1, -2.5] | takes a number from -2 to 6
sample.absorbance | nan | takes a number from -2 to 6
sample.absorbance | "0.5" | takes a number from -2 to 6
sample.absorbance | [] | takes at least one number
detector.dark | 16777216 | takes a whole number from -16777216 to 16777215
detector.dark | 1.5 | takes a whole number from -16777216 to 16777215
detector.reference | -16777217 | takes a whole number from -16777216 to 16777215
detector.noise | -1 | takes a number from 0 to 10000000
detector.noise | inf | takes a number from 0 to 10000000
card.free_bytes | -1 | takes a whole number from 0 to 1125899906842624
indicator.cable_length | -1 | takes a number from 0 to 1000000
indicator.lamp_voltage | 101 | takes a number from -100 to 100
converter.words | [-1] | takes a whole number from 0 to 4294967295
converter.words | [4294967296] | takes a whole number from 0 to 4294967295
converter.words | 7 | takes a list in brackets
channels.exported | [4] | takes a whole number from 0 to 3
channels.enabled | [0] | takes channels that are exported
channels.exported | [true] | takes a whole number from 0 to 3
lines.exported | ["B32"] | no line is named "B32"; lines are A0 to D31
lines.exported | ["B07"] | no line is named "B07"; lines are A0 to D31
lines.high | ["E0"] | no line is named "E0"; lines are A0 to D31
lines.high | [7] | takes a list of texts in quotes
lines.high | "A0" | takes a list in brackets
mount_table.lines | [1] | takes a list of texts in quotes
adc.scale | 0.0001 | takes a text in quotes
threads.order | "random" | takes "arrival", "seeded" or "given"
threads.order | 1 | takes a text in quotes
threads.io | "serial" | takes "alone" or "parallel"
threads.preempt | [0] | takes a whole number from 1 to 1000000000
threads.preempt | [1] | needs order = "given"
threads.stacks | "yes" | takes true or false
clock.zone | "Middle Europe" | takes a time zone of this machine, such as "Europe/Berlin"
board.missing | ["/sys/class/leds"] | "/sys/class/leds" is no path of the board; takes one such as "/sys/class/gpio/pioB18/value"
board.missing | ["/dev/../dev/mem"] | "/dev/../dev/mem" is no path of the board; takes one such as "/sys/class/gpio/pioB18/value"
card | true | is a table: [card]
attributes | [] | is a table: [attributes]
fault | "open" | is a list of tables: [[fault]]
card.event | [1] | is a list of tables: [[card.event]])";

TEST(WrongScenario, HasAValueThatItsKeyDoesNotTake) {
    for (const Words& row : RowsOf(kWrongValues)) {
        EXPECT_EQ(ErrorOf("\n\n" + row.at(0) + " = " + row.at(1)),
                  "3: " + row.at(0) + ": " + row.at(2));
    }
}

/// A table's lines with one that is wrong or missing, and what is said of it.
const std::string kWrongTables = R"([[card.event]]; do = 'insert' | 1: card.event.at: is missing
[[card.event]]; at = 1 | 1: card.event.do: is missing
[[card.event]]; at = 1; do = 'pull' | 3: card.event.do: takes "insert", "remove", "lock" or "unlock"
[[board.event]]; at = 1 | 1: board.event.do: is missing
[[board.event]]; at = 1; do = 'cut' | 3: board.event.do: takes "power-cut"
[[sample.event]]; at = 1 | 1: sample.event.absorbance: is missing
[[sample.event]]; at = 1; absorbance = 6.01 | 3: sample.event.absorbance: takes a number from -2 to 6
[[detector.event]]; at = 1; noise = -1 | 3: detector.event.noise: takes a number from 0 to 10000000
[[pump.event]]; at = 1; flag_seen = 1 | 3: pump.event.flag_seen: takes true or false
[[fault]]; call = 'open'; errno = 'EIO'; at = -1 | 4: fault.at: takes a number from 0 to 1000000000
[[card.event]]; at = -1; do = 'insert' | 2: card.event.at: takes a number from 0 to 1000000000
[[clock.jump]]; at = 1 | 1: clock.jump.seconds: is missing
[[clock.jump]]; at = 1; seconds = 0.5 | 3: clock.jump.seconds: takes a whole number from -2000000000 to 2000000000
[[clock.jump]]; at = '1'; seconds = 5 | 2: clock.jump.at: takes a number from 0 to 1000000000
[[lines.event]]; at = 1; level = 1 | 1: lines.event.line: is missing
[[lines.event]]; at = 1; line = 'B18' | 1: lines.event.level: is missing
[[lines.event]]; at = 1; line = 'B18'; level = 2 | 4: lines.event.level: takes a whole number from 0 to 1
[[lines.event]]; at = 1; line = 'Z1'; level = 1 | 3: lines.event.line: no line is named "Z1"; lines are A0 to D31
[[card.event]]; at = 1; at_step = 2; do = 'insert' | 2: card.event.at: an event has one of at, at_step, at_measurement and on
[[card.event]]; at_step = 0; do = 'insert' | 2: card.event.at_step: takes a whole number from 1 to 1000000000
[[card.event]]; on = { path = '/dev/mem' }; do = 'insert' | 2: card.event.on.call: is missing
[[card.event]]; on = { call = 'open', times = 2 }; do = 'insert' | 2: card.event.on.times: unknown key; known here: call, occurrence, path
[[fault]]; call = 'open'; errno = 'EIO'; at = 1; at_step = 2 | 4: fault.at: a fault has one of at, at_step and at_measurement
[[fault]]; call = 'open'; errno = 'EIO'; probability = 2 | 4: fault.probability: takes a number from 0 to 1
[[adc.input]]; volts = 1 | 1: adc.input.number: is missing
[[adc.input]]; number = 3 | 1: adc.input.volts: is missing
[[adc.input]]; number = 12; volts = 1 | 2: adc.input.number: takes a whole number from 0 to 11
[[file_system]]; blocks = 1 | 1: file_system.directory: is missing
[[file_system]]; directory = '/a'; free = -1 | 3: file_system.free: takes a whole number from 0 to 1152921504606846976
[[fault]]; errno = 'EIO' | 1: fault.call: is missing
[[fault]]; call = 'open' | 1: fault.errno: a fault has either an errno or bytes
[[fault]]; call = 'write'; errno = 'EIO'; bytes = 1 | 3: fault.errno: a fault has either an errno or bytes
[[fault]]; call = 'open'; bytes = 1 | 3: fault.bytes: goes with the calls read and write only
[[fault]]; call = 'open'; errno = 'EFOO' | 3: fault.errno: unknown name "EFOO"; takes one such as "EACCES"
[[fault]]; call = 'open'; errno = 13 | 3: fault.errno: takes a text in quotes
[[fault]]; call = 'open'; errno = 'EIO'; occurrence = 0 | 4: fault.occurrence: takes a whole number from 1 to 1000000000
[[fault]]; call = 'open'; errno = 'EIO'; repeat = 'twice' | 4: fault.repeat: takes "once" or "forever"
[[fault]]; call = 'open'; path = '/sys/class/gpoi/export'; errno = 'EIO' | 3: fault.path: no path of the board; takes one such as "/sys/class/gpio/export" or, for all that begin so, "/sys/class/gpio/*"
[[fault]]; call = 'open'; path = '/sys/class/gpoi/*'; errno = 'EIO' | 3: fault.path: no path of the board; takes one such as "/sys/class/gpio/export" or, for all that begin so, "/sys/class/gpio/*"
[[fault]]; call = 'open'; path = '/sys//class/gpio/*'; errno = 'EIO' | 3: fault.path: no path of the board; takes one such as "/sys/class/gpio/export" or, for all that begin so, "/sys/class/gpio/*"
[[fault]]; call = 'pthread_create'; path = '/dev/mem'; errno = 'EIO' | 3: fault.path: the call pthread_create has no path)";

TEST(WrongScenario, HasATableWithALineThatIsWrongOrMissing) {
    for (const Words& row : RowsOf(kWrongTables)) {
        EXPECT_EQ(ErrorOf(std::regex_replace(row.at(0), std::regex("; "), "\n")), row.at(1))
            << row.at(0);
    }
}

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
              "3: pump.flag: unknown key; known here: event, flag_seen, on_flag_at_start");
    EXPECT_EQ(ErrorOf("[pumps]\n"),
              "1: pumps: unknown key; known here: adc, attributes, board, card, channels, clock, "
              "converter, detector, fault, file_system, indicator, lines, mount_table, pump, "
              "sample, threads");
    EXPECT_EQ(ErrorOf("[[fault]]\ncall = 'open'\nerrno = 'EIO'\nonce = true"),
              "4: fault.once: unknown key; known here: at, at_measurement, at_step, bytes, call, "
              "errno, occurrence, path, probability, "
              "repeat, until");
    for (const char* table : {"board", "sample", "detector", "card", "clock", "lines", "threads",
                              "mount_table", "indicator", "adc", "converter", "channels"}) {
        EXPECT_THAT(ErrorOf(std::string(table) + ".unknown = 1"),
                    StartsWith(std::string("1: ") + table + ".unknown: unknown key; known here: "));
    }
    for (const char* table : {"card.event", "clock.jump", "lines.event", "sample.event",
                              "detector.event", "pump.event", "adc.input", "file_system"}) {
        EXPECT_THAT(
            ErrorOf(std::string("[[") + table +
                    "]]\nat = 1\ndo = 'insert'\nseconds = 1\nline = 'A0'\nlevel = 1\nnumber = 1\n"
                    "volts = 1\ndirectory = '/'\nabsorbance = 1\nnoise = 1\nflag_seen = true\n"
                    "unknown = 1"),
            HasSubstr("unknown key; known here: "));
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
    EXPECT_THAT(ErrorOf("\n\n[card\n"), StartsWith("3: "));
    EXPECT_THAT(ErrorOf("card.present = true\ncard.present = false"), StartsWith("2: "));
    EXPECT_THAT(ErrorOf("a = \"\xff\""), StartsWith("1: "));
    EXPECT_THAT(ErrorOf("[?card]\n"), StartsWith("1: "));
    EXPECT_THAT(ErrorOf("é = 1\n"), StartsWith("1: "));
    EXPECT_NE(ErrorOf(std::string("a\0b", 3)), "");
}

TEST(WrongScenario, IsToldInOneLineWhateverItHolds) {
    EXPECT_THAT(ErrorOf("a = t\n"), EndsWith("saw 't?'"));
    EXPECT_THAT(ErrorOf("\"a\\nb\" = 1\n"), StartsWith("1: a?b: "));
}

TEST(WrongScenario, OnlyTheFirstErrorIsTold) {
    EXPECT_EQ(ErrorOf("card.present = 1\ncard.fat = 1"), "1: card.present: takes true or false");
}

TEST(WrongScenario, EndsTheLauncherWithFileLineAndKey) {
    const TestFolder folder;
    const std::string file = folder.Path("board.toml");
    WriteText(file, "[pump]\nflag_seen = 3\n");
    WriteText(folder.Path("events"), "of an earlier run\n");
    const CommandResult run =
        SimulateTrouble({"speak"}, {"--scenario", file, "--summary", folder.Path("summary"),
                                    "--events", folder.Path("events")});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.error, "simulate: " + file + ":2: pump.flag_seen: takes true or false\n");
    EXPECT_EQ(run.output, "") << "the program never began";
    EXPECT_EQ(TextOf(folder.Path("summary")), "");
    EXPECT_EQ(TextOf(folder.Path("events")), "of an earlier run\n");
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
