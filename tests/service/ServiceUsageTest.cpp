// What tavrelin-service says about itself, and to somebody who uses it wrongly. It runs on this
// machine itself, where nothing of this touches anything.

#include "tests/service/ServiceRun.h"
#include "tests/support/GoldenFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

namespace tavrelin {
namespace {

const Words kCommands = {"state-table", "self-test",    "alarm",      "tone",     "volume",
                         "indicator",   "cable-length", "read-adc",   "register", "wait-edge",
                         "storage",     "card",         "log-message"};

TEST(ServiceHelp, TellsTheCommandsAndWhatEachDoes) {
    const CommandResult help = CallService({"--help"});
    std::string transcript = Transcript({"--help"}, help);
    for (const std::string& command : kCommands) {
        EXPECT_THAT(help.output, testing::HasSubstr("\n  " + command + " "));
        transcript += "\n" + Transcript({command, "--help"}, CallService({command, "--help"}));
    }
    EXPECT_TRUE(MatchesGoldenFile(transcript, "service/golden/help.txt"));
}

void ExpectRefused(const Words& words, const std::string& line) {
    const CommandResult result = CallService(words);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error, line + "\n") << testing::PrintToString(words);
}

TEST(ServiceRefuses, WhatIsNoCommand) {
    ExpectRefused({}, "tavrelin-service: needs a command; see tavrelin-service --help");
    for (const char* word : {"", "beep", "ALARM", "-h", "--version"}) {
        ExpectRefused({word}, "tavrelin-service: no command '" + std::string(word) +
                                  "'; see tavrelin-service --help");
    }
}

/// What is said of a command's words, and the words.
struct WrongWords {
    std::string what;
    std::vector<Words> uses;
};

void PrintTo(const WrongWords& words, std::ostream* out) {
    *out << words.what;
}

class ServiceWrongUse : public testing::TestWithParam<WrongWords> {};

TEST_P(ServiceWrongUse, EndsWithStatus2AndALineThatSaysWhatIsWrong) {
    for (const Words& words : GetParam().uses) {
        const std::string name = "tavrelin-service " + words.front();
        ExpectRefused(words, name + ": " + GetParam().what + "; see " + name + " --help");
    }
}

INSTANTIATE_TEST_SUITE_P(
    , ServiceWrongUse,
    testing::Values(
        WrongWords{"takes no arguments, but got 'more'",
                   {{"state-table", "more"},
                    {"self-test", "more"},
                    {"board-check", "more"},
                    {"safe-state", "more"},
                    {"tone", "more"},
                    {"cable-length", "more"},
                    {"storage", "more"},
                    {"card", "more"}}},
        WrongWords{"--for takes one whole number of seconds from 1 to 3600",
                   {{"alarm", "--for"},
                    {"alarm", "--for", ""},
                    {"alarm", "--for", "0"},
                    {"alarm", "--for", "3601"},
                    {"alarm", "--for", "-1"},
                    {"alarm", "--for", "1.5"},
                    {"alarm", "--for", "5s"},
                    {"alarm", "--for", " 5"},
                    {"alarm", "--for", "+5"},
                    {"alarm", "--for", "99999999999999999999"},
                    {"alarm", "--for", "5", "6"},
                    {"alarm", "--for", "5", "--help"},
                    {"wait-edge", "B18", "5"},
                    {"wait-edge", "B18", "--for", "0"}}},
        WrongWords{"takes one CODE, a whole number from 0 to 4294967295",
                   {{"indicator", "red"},
                    {"indicator", ""},
                    {"indicator", "-1"},
                    {"indicator", "4294967296"},
                    {"indicator", "1.0"},
                    {"indicator", "0x1"},
                    {"indicator", "1", "2"}}},
        WrongWords{"takes one CHANNEL, a whole number from 0 to 11",
                   {{"read-adc"},
                    {"read-adc", "six"},
                    {"read-adc", ""},
                    {"read-adc", "6V"},
                    {"read-adc", "12"},
                    {"read-adc", "-1"},
                    {"read-adc", "6", "7"}}},
        WrongWords{"takes one PERCENT, a whole number from 0 to 100",
                   {{"volume"}, {"volume", "101"}, {"volume", "-1"}, {"volume", "50", "50"}}},
        WrongWords{"takes one LINE, A0 to D31, and at most one LEVEL, 0 or 1",
                   {{"register"},
                    {"register", "E0"},
                    {"register", "b18"},
                    {"register", "B"},
                    {"register", "B32"},
                    {"register", "18"},
                    {"register", "B18", "2"},
                    {"register", "B18", "1", "1"}}},
        WrongWords{"takes one LINE, A0 to D31", {{"wait-edge"}, {"wait-edge", "--for", "5"}}},
        WrongWords{"takes at least one TEXT", {{"log-message"}}}));

// No name of a file at all: it would go to a shell as it stands.
TEST(ServiceRefuses, AnyFileForTheAlarm) {
    for (const std::string name :
         {"siren.wav", "two words.wav", "it's.wav", "a.wav; reboot", "$(reboot).wav", ""}) {
        ExpectRefused({"alarm", name},
                      "tavrelin-service alarm: takes --for SECONDS and no file name, but got '" +
                          name + "'; see tavrelin-service alarm --help");
    }
}

// The statuses of the routines' own answers; on this machine these touch nothing either.
TEST(ServiceStatus, IsZeroWhenTheRoutineSucceededAndOneWhenItFailed) {
    EXPECT_EQ(CallService({"state-table"}).status, 0);
    EXPECT_EQ(CallService({"storage"}).status, 0);
    EXPECT_EQ(CallService({"--help"}).status, 0);
    EXPECT_EQ(CallService({"log-message", std::string(30, 'x')}).status, 1);
}

} // namespace
} // namespace tavrelin
