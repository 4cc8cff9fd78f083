// What tavrelin-service says about itself, and to somebody who uses it wrongly. It runs on this
// machine itself, where nothing of this touches anything.

#include "tests/service/ServiceRun.h"
#include "tests/support/GoldenFile.h"

#include <gtest/gtest.h>

#include <ostream>

namespace tavrelin {
namespace {

const Words kCommands = {"state-table", "alarm",    "indicator", "cable-length",
                         "storage",     "read-adc", "tone",      "log-message"};

TEST(ServiceHelp, TellsTheCommandsAndWhatEachDoes) {
    std::string transcript = Transcript({"--help"}, CallService({"--help"}));
    for (const std::string& command : kCommands) {
        transcript += "\n" + Transcript({command, "--help"}, CallService({command, "--help"}));
    }
    EXPECT_TRUE(MatchesGoldenFile(transcript, "service/golden/help.txt"));
}

TEST(ServiceHelp, NamesEveryCommand) {
    const std::string help = CallService({"--help"}).output;
    for (const std::string& command : kCommands) {
        EXPECT_NE(help.find("\n  " + command + " "), std::string::npos) << command;
    }
}

/// Words that are wrong, and the line that says so.
struct WrongUse {
    Words words;
    std::string line;
};

void PrintTo(const WrongUse& use, std::ostream* out) {
    *out << "tavrelin-service";
    for (const std::string& word : use.words) {
        *out << " '" << word << "'";
    }
}

class ServiceWrongUse : public testing::TestWithParam<WrongUse> {};

TEST_P(ServiceWrongUse, EndsWithStatus2AndALineThatSaysWhatIsWrong) {
    const CommandResult result = CallService(GetParam().words);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error, GetParam().line + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    OfTheProgram, ServiceWrongUse,
    testing::Values(
        WrongUse{{}, "tavrelin-service: needs a command; see tavrelin-service --help"},
        WrongUse{{""}, "tavrelin-service: no command ''; see tavrelin-service --help"},
        WrongUse{{"beep"}, "tavrelin-service: no command 'beep'; see tavrelin-service --help"},
        WrongUse{{"ALARM"}, "tavrelin-service: no command 'ALARM'; see tavrelin-service --help"},
        WrongUse{{"--version"},
                 "tavrelin-service: no command '--version'; see tavrelin-service --help"}));

WrongUse TakesNoArguments(const std::string& command) {
    return {{command, "more"},
            "tavrelin-service " + command + ": takes no arguments, but got 'more'; see " +
                "tavrelin-service " + command + " --help"};
}

INSTANTIATE_TEST_SUITE_P(OfACommandWithoutArguments, ServiceWrongUse,
                         testing::Values(TakesNoArguments("state-table"),
                                         TakesNoArguments("cable-length"),
                                         TakesNoArguments("storage"), TakesNoArguments("tone")));

// No name of a file at all: it would go to a shell as it stands.
WrongUse NoFileName(const std::string& name) {
    return {{"alarm", name},
            "tavrelin-service alarm: takes --for SECONDS and no file name, but got '" + name +
                "'; see tavrelin-service alarm --help"};
}

INSTANTIATE_TEST_SUITE_P(OfAlarmWithAFile, ServiceWrongUse,
                         testing::Values(NoFileName("siren.wav"), NoFileName("two words.wav"),
                                         NoFileName("it's.wav"), NoFileName("a.wav; reboot"),
                                         NoFileName("$(reboot).wav"), NoFileName("")));

WrongUse NoDuration(const Words& words) {
    return {words, "tavrelin-service alarm: --for takes one whole number of seconds from 1 to "
                   "3600; see tavrelin-service alarm --help"};
}

INSTANTIATE_TEST_SUITE_P(
    OfAlarmsDuration, ServiceWrongUse,
    testing::Values(NoDuration({"alarm", "--for"}), NoDuration({"alarm", "--for", ""}),
                    NoDuration({"alarm", "--for", "0"}), NoDuration({"alarm", "--for", "3601"}),
                    NoDuration({"alarm", "--for", "-1"}), NoDuration({"alarm", "--for", "1.5"}),
                    NoDuration({"alarm", "--for", "5s"}), NoDuration({"alarm", "--for", " 5"}),
                    NoDuration({"alarm", "--for", "+5"}),
                    NoDuration({"alarm", "--for", "99999999999999999999"}),
                    NoDuration({"alarm", "--for", "5", "6"}),
                    NoDuration({"alarm", "--for", "5", "--help"})));

WrongUse NoCode(const Words& words) {
    return {words, "tavrelin-service indicator: takes one CODE, a whole number from 0 to "
                   "4294967295; see tavrelin-service indicator --help"};
}

INSTANTIATE_TEST_SUITE_P(OfIndicator, ServiceWrongUse,
                         testing::Values(NoCode({"indicator"}), NoCode({"indicator", "red"}),
                                         NoCode({"indicator", ""}), NoCode({"indicator", "-1"}),
                                         NoCode({"indicator", "4294967296"}),
                                         NoCode({"indicator", "1.0"}), NoCode({"indicator", "0x1"}),
                                         NoCode({"indicator", "1", "2"})));

WrongUse NoChannel(const Words& words) {
    return {words, "tavrelin-service read-adc: takes one CHANNEL, a whole number from 0 to 11; "
                   "see tavrelin-service read-adc --help"};
}

INSTANTIATE_TEST_SUITE_P(OfReadAdc, ServiceWrongUse,
                         testing::Values(NoChannel({"read-adc"}), NoChannel({"read-adc", "six"}),
                                         NoChannel({"read-adc", ""}), NoChannel({"read-adc", "6V"}),
                                         NoChannel({"read-adc", "2147483648"}),
                                         NoChannel({"read-adc", "6", "7"})));

INSTANTIATE_TEST_SUITE_P(OfLogMessage, ServiceWrongUse,
                         testing::Values(WrongUse{
                             {"log-message"},
                             "tavrelin-service log-message: takes at least one TEXT; see "
                             "tavrelin-service log-message --help"}));

// The statuses of the routines' own answers; on this machine these touch nothing either.

TEST(ServiceStatus, IsZeroWhenTheRoutineSucceeded) {
    EXPECT_EQ(CallService({"state-table"}).status, 0);
    EXPECT_EQ(CallService({"storage"}).status, 0);
    EXPECT_EQ(CallService({"--help"}).status, 0);
}

TEST(ServiceStatus, IsOneWhenTheRoutineFailed) {
    EXPECT_EQ(CallService({"read-adc", "12"}).status, 1);
    EXPECT_EQ(CallService({"log-message", std::string(30, 'x')}).status, 1);
}

} // namespace
} // namespace tavrelin
