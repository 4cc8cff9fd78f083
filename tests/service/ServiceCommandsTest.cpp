// Every command of tavrelin-service on the simulated board, as a person sees it.

#include "tests/service/ServiceRun.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/TestCard.h"
#include "tests/support/Text.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

constexpr const char* kCardMounted = "[card]\nmounted = true\n";
constexpr const char* kLog = "2026-03-07_logfile.csv";

TEST(ServiceStateTable, PrintsWhatTheRoutinePrints) {
    const CommandResult result = SimulateService({"state-table"}).result;
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(MatchesGoldenFile(result.output, "service/golden/state-table.txt"));
    EXPECT_EQ(result.error, "");
}

TEST(ServiceStorage, ListsWhatIsMounted) {
    EXPECT_TRUE(MatchesGoldenFile(SimulatedTranscript({"storage"}, kCardMounted) +
                                      "\nOne of three is refused:\n" +
                                      SimulatedTranscript({"storage"}, R"([mount_table]
lines = ["/dev/sda1 /mnt/a ext4 rw 0 0", "/dev/sda2 /mnt/b ext4 rw 0 0", "/dev/sda3 /mnt/c ext4 rw 0 0"]
[[file_system]]
directory = "/mnt/a"
blocks = 1000
[[file_system]]
directory = "/mnt/c"
block_size = 512
blocks = 4
free = 3
available = 2
)") + "\nA device without a name ends the output:\n" +
                                      SimulatedTranscript({"storage"}, R"([card]
mounted = true
[mount_table]
lines = ["(missing) /run ext4 rw 0 0"]
)") + "\nNo table:\n" + SimulatedTranscript({"storage"}, "[mount_table]\npresent = false\n"),
                                  "service/golden/storage.txt"));
}

TEST(ServiceReadAdc, PrintsTheVoltageOrSaysWhyNot) {
    const std::string inputs = "[adc]\nscale = \"0.805664062\"\n"
                               "[[adc.input]]\nnumber = 0\nvolts = 1.6113\n"
                               "[[adc.input]]\nnumber = 11\nvolts = -0.25\n";
    EXPECT_TRUE(MatchesGoldenFile(
        SimulatedTranscript({"read-adc", "0"}, inputs) +
            SimulatedTranscript({"read-adc", "11"}, inputs) +
            SimulatedTranscript({"read-adc", "6"}, inputs) + "\nNo such channel:\n" +
            SimulatedTranscript({"read-adc", "12"}, inputs) +
            SimulatedTranscript({"read-adc", "-1"}, inputs) + "\nNo converter:\n" +
            SimulatedTranscript({"read-adc", "6"},
                                "[board]\nmissing = [\"/sys/bus/iio/devices/iio:device0/\"]\n") +
            "\nNo counts, no scale:\n" +
            SimulatedTranscript(
                {"read-adc", "6"},
                "[board]\nmissing = [\"/sys/bus/iio/devices/iio:device0/in_voltage6_raw\"]\n") +
            SimulatedTranscript(
                {"read-adc", "6"},
                "[board]\nmissing = [\"/sys/bus/iio/devices/iio:device0/in_voltage_scale\"]\n") +
            "\nRubbish for counts:\n" +
            SimulatedTranscript({"read-adc", "6"}, "[attributes]\n\"/sys/bus/iio/devices/"
                                                   "iio:device0/in_voltage6_raw\" = \"rubbish\"\n"),
        "service/golden/read-adc.txt"));
}

TEST(ServiceIndicator, ShowsAnyCode) {
    const std::string dead = "[[fault]]\ncall = \"open\"\nerrno = \"EACCES\"\nrepeat = "
                             "\"forever\"\npath = \"/sys/class/gpio/pioD20/";
    EXPECT_TRUE(MatchesGoldenFile(
        SimulatedTranscript({"indicator", "1"}) + SimulatedTranscript({"indicator", "10"}) +
            SimulatedTranscript({"indicator", "11"}) +
            SimulatedTranscript({"indicator", "4294967295"}) +
            "\nA line that cannot be set up, or not be written:\n" +
            SimulatedTranscript({"indicator", "1"}, dead + "direction\"\n") +
            SimulatedTranscript({"indicator", "1"}, dead + "value\"\n") +
            "\nA line that an earlier run left behind does:\n" +
            SimulatedTranscript({"indicator", "1"}, "[lines]\nexported = [\"D20\"]\n"),
        "service/golden/indicator.txt"));
}

// What was written last to the six lines, in the order in which it was.
std::string ColourShown(const std::string& events) {
    std::string levels;
    for (const std::string& line : LinesWith(events, "/value \"")) {
        levels += line[line.size() - 2];
    }
    return levels.size() < 6 ? levels : levels.substr(levels.size() - 6);
}

TEST(ServiceIndicator, HandsTheCodeOn) {
    EXPECT_EQ(ColourShown(SimulateService({"indicator", "5"}).events), "100010");
    EXPECT_EQ(ColourShown(SimulateService({"indicator", "0"}).events), "111111");
    EXPECT_EQ(ColourShown(SimulateService({"indicator", "11"}).events), "000000");
}

TEST(ServiceCableLength, PrintsTheLengthOrWhatFailed) {
    const auto cable = [](const std::string& length, const std::string& lamp) {
        return "[indicator]\ncable_length = " + length + "\nlamp_voltage = " + lamp + "\n";
    };
    EXPECT_TRUE(MatchesGoldenFile(
        SimulatedTranscript({"cable-length"}) +
            SimulatedTranscript({"cable-length"}, cable("123.456", "4.0")) +
            SimulatedTranscript({"cable-length"}, cable("1000.0", "12.0")) + "\nNo lamp:\n" +
            SimulatedTranscript({"cable-length"},
                                cable("25.0", "0.0") + "[adc]\nscale = \"1024\"\n") +
            SimulatedTranscript({"cable-length"},
                                cable("25.0", "0.0") + "[adc]\nscale = \"2048\"\n") +
            "\nNo converter; no lines:\n" +
            SimulatedTranscript({"cable-length"},
                                "[board]\nmissing = [\"/sys/bus/iio/devices/iio:device0/\"]\n") +
            SimulatedTranscript({"cable-length"}, "[board]\npresent = false\n"),
        "service/golden/cable-length.txt"));
}

TEST(ServiceTone, ReportsEachPeriodAndPlaysThemAll) {
    const TestCard card;
    EXPECT_TRUE(MatchesGoldenFile(SimulatedTranscript({"tone"}), "service/golden/tone.txt"));
    EXPECT_EQ(card.Played().size(), 703U * 128U * 4U);
}

TEST(ServiceTone, FailsWithoutAPlaybackDevice) {
    TestCard card;
    card.TakeAwayPlayback();
    const CommandResult result = SimulateService({"tone"}).result;
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "Codec::Play failed!\n");
}

TEST(ServiceLogMessage, TellsWhatWasAcceptedAndWhatWaits) {
    const std::string longest(29, 'x');
    EXPECT_TRUE(MatchesGoldenFile(
        SimulatedTranscript({"log-message", "valve opened", "", longest}, kCardMounted) +
            "\nToo long; the others are taken:\n" +
            SimulatedTranscript({"log-message", longest + "y", "short"}, kCardMounted) +
            "\nNo card mounted:\n" + SimulatedTranscript({"log-message", "valve opened"}),
        "service/golden/log-message.txt"));
}

Words Messages(std::size_t count) {
    Words words = {"log-message"};
    for (std::size_t number = 1; number <= count; ++number) {
        words.push_back("message " + std::to_string(number) + "\n");
    }
    return words;
}

std::string LogOf(const Words& messages, std::size_t count) {
    std::string log;
    for (std::size_t number = 1; number <= count; ++number) {
        log += messages[number];
    }
    return log;
}

TEST(ServiceLogMessage, WritesTheLogAtThe240th) {
    const Words words = Messages(240);
    const SimulatedCall call = SimulateService(words, kCardMounted);
    EXPECT_EQ(call.result.status, 0);
    EXPECT_EQ(call.result.output, "240 accepted, 0 pending\n");
    EXPECT_EQ(call.result.error, "");
    EXPECT_EQ(call.card.at(kLog), LogOf(words, 240));
}

TEST(ServiceLogMessage, DropsTheOthersAndSaysSo) {
    const std::string warning =
        "Only the 240th message writes them to the log: this program's end drops them.\n";
    const SimulatedCall fewer = SimulateService(Messages(239), kCardMounted);
    EXPECT_EQ(fewer.result.output, "239 accepted, 239 pending\n" + warning);
    EXPECT_TRUE(fewer.card.empty());
    const Words words = Messages(241);
    const SimulatedCall more = SimulateService(words, kCardMounted);
    EXPECT_EQ(more.result.output, "241 accepted, 1 pending\n" + warning);
    EXPECT_EQ(more.card.at(kLog), LogOf(words, 240));
}

} // namespace
} // namespace tavrelin
