// Every command of tavrelin-service on the simulated board, as a person sees it.

#include "tests/service/ServiceRun.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/TestCard.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>
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
    const std::string converter = "/sys/bus/iio/devices/iio:device0/";
    const auto without = [&](const std::string& attribute) {
        return SimulatedTranscript({"read-adc", "6"},
                                   "[board]\nmissing = [\"" + converter + attribute + "\"]\n");
    };
    EXPECT_TRUE(MatchesGoldenFile(
        SimulatedTranscript({"read-adc", "0"}, inputs) +
            SimulatedTranscript({"read-adc", "11"}, inputs) +
            SimulatedTranscript({"read-adc", "6"}, inputs) + "\nNo converter:\n" + without("") +
            "\nNo counts, no scale:\n" + without("in_voltage6_raw") + without("in_voltage_scale") +
            "\nRubbish for counts:\n" +
            SimulatedTranscript({"read-adc", "6"}, "[attributes]\n\"" + converter +
                                                       "in_voltage6_raw\" = \"rubbish\"\n"),
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

TEST(ServiceIndicator, IsStartedWithColour1WithoutACode) {
    const SimulatedCall call = SimulateService({"indicator"});
    EXPECT_EQ(call.result.status, 0);
    EXPECT_EQ(call.events, SimulateService({"indicator", "1"}).events);
    const SimulatedCall dead = SimulateService({"indicator"}, "[board]\npresent = false\n");
    EXPECT_EQ(dead.result.status, 0); // the routine's own answer: it was tried
    EXPECT_THAT(dead.result.output, testing::EndsWith("RemoteIndicator::SetLEDColors failed!\n"));
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

// A period of 128 frames lasts 7111 us: 703 of them in 5 s, each 50 Hz above the one before.
TEST(ServiceTone, ReportsEachPeriodAndPlaysThemAll) {
    const TestCard card;
    const std::string begin = "period size = 128 frames\n"
                              "buffer size = 18000 frames\n"
                              "the size:val:loops are 512:7111:703\n"
                              "the return_code:loop are 128:702\n"
                              "the frequency is 550\n";
    const std::string end = "the return_code:loop are 128:0\n"
                            "the frequency is 35650\n";
    std::string middle;
    for (int left = 701; left > 0; --left) {
        middle += "the return_code:loop are 128:" + std::to_string(left) + "\nthe frequency is " +
                  std::to_string(500 + (703 - left) * 50) + "\n";
    }
    const CommandResult result = SimulateService({"tone"}).result;
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(FirstDifference(begin + middle + end, result.output), "");
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(card.Played().size(), 703U * 128U * 4U);
}

TEST(ServiceTone, FailsWithoutAPlaybackDevice) {
    TestCard card;
    card.TakeAwayPlayback();
    const CommandResult result = SimulateService({"tone"}).result;
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "Codec::Play failed!\n");
}

TEST(ServiceVolume, SwitchesTheSoundOnAndSetsAllChannels) {
    const TestCard card;
    EXPECT_EQ(SimulatedTranscript({"volume", "50"}), "$ tavrelin-service volume 50\n");
    EXPECT_EQ(card.Mixer(), MixerText("1 1", "31 31"));
    EXPECT_EQ(SimulatedTranscript({"volume", "0"}), "$ tavrelin-service volume 0\n");
    EXPECT_EQ(card.Mixer(), MixerText("1 1", "0 0"));
}

TEST(ServiceVolume, IsSetOnACardThatHasNoSwitch) {
    TestCard card;
    card.SetMixer("integer \"Master Playback Volume\" 0 63 20 20\n");
    EXPECT_EQ(SimulatedTranscript({"volume", "100"}),
              "$ tavrelin-service volume 100\nCodec::Unmute failed!\n(status 1)\n");
    EXPECT_EQ(card.Mixer(), "integer \"Master Playback Volume\" 0 63 63 63\n");
    card.TakeAwayMixer();
    const CommandResult none = SimulateService({"volume", "100"}).result;
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.output, "Codec::Unmute failed!\nCodec::SetVolume failed!\n");
}

TEST(ServiceSelfTest, PrintsTheFiguresThatMustCome) {
    const SimulatedCall call = SimulateService({"self-test"});
    EXPECT_EQ(Transcript({"self-test"}, call.result), "$ tavrelin-service self-test\n"
                                                      "Absorbance Value(1):  0.107906\n"
                                                      "Absorbance Value(2):  0.5688\n"
                                                      "Chlorine Value(1):  185.04\n"
                                                      "Chlorine Value(2):  975.389\n");
    EXPECT_EQ(call.events, "");
}

TEST(ServiceCard, TellsWhatIsInTheSlotAndWhatIsListed) {
    const auto told = [](const std::string& board) { return SimulatedTranscript({"card"}, board); };
    const std::string command = "$ tavrelin-service card\n";
    EXPECT_EQ(told(kCardMounted),
              command + "In the slot: 1\nListed as mounted: 1\nMounts of its partition: 1\n");
    EXPECT_EQ(told(""),
              command + "In the slot: 1\nListed as mounted: 0\nMounts of its partition: 0\n");
    EXPECT_EQ(told("[card]\npresent = false\n[mount_table]\n"
                   "lines = [\"/dev/sda1 /mnt/sd-card vfat rw 0 0\"]\n"),
              command + "In the slot: 0\nListed as mounted: 1\nMounts of its partition: 0\n");
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

TEST(ServiceLogMessage, WritesTheLogAtThe240thDropsTheOthersAndSaysSo) {
    const std::string warning =
        "Only the 240th message writes them to the log: this program's end drops them.\n";
    const SimulatedCall fewer = SimulateService(Messages(239), kCardMounted);
    EXPECT_EQ(fewer.result.output, "239 accepted, 239 pending\n" + warning);
    EXPECT_THAT(fewer.card, testing::IsEmpty());
    std::string log;
    for (const std::string& message : Messages(240)) {
        log += message == "log-message" ? "" : message;
    }
    const SimulatedCall all = SimulateService(Messages(240), kCardMounted);
    EXPECT_EQ(all.result.output, "240 accepted, 0 pending\n");
    EXPECT_EQ(all.card.at(kLog), log);
    const SimulatedCall more = SimulateService(Messages(241), kCardMounted);
    EXPECT_EQ(more.result.status, 0);
    EXPECT_EQ(more.result.output, "241 accepted, 1 pending\n" + warning);
    EXPECT_EQ(more.result.error, "");
    EXPECT_EQ(more.card.at(kLog), log);
}

} // namespace
} // namespace tavrelin
