#include "tests/service/ServiceRun.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/Places.h"
#include "tests/support/TestCard.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

class ServiceBoardCheck : public testing::Test {
  protected:
    TestCard sound; // the instrument's card and no other
};

// What is not ok, under a heading. The sound library may add its own on standard error.
std::string Missing(const std::string& what, const std::string& board) {
    const CommandResult result = SimulateService({"board-check"}, board).result;
    std::string text = "\n" + what + ":\n";
    for (const std::string& row : LinesOf(result.output)) {
        text += row.rfind("ok ", 0) == 0 ? "" : row + "\n";
    }
    return text + "(status " + std::to_string(result.status) + ")\n";
}

std::string Without(const std::string& path) {
    return Missing("Without " + path, "[board]\nmissing = [\"" + path + "\"]\n");
}

TEST_F(ServiceBoardCheck, TellsWhatIsThereAndWhatIsMissing) {
    std::string text = SimulatedTranscript({"board-check"}) + Without("/sys/class/gpio") +
                       Without("/sys/class/gpio/pioB15") + Without("/sys/class/gpio/pioA2/edge") +
                       Without("/sys/class/pwm/pwmchip0") +
                       Missing("Two channels only",
                               "[attributes]\n\"/sys/class/pwm/pwmchip0/npwm\" = \"2\\n\"\n") +
                       Without("/dev/spidev32765.1") +
                       Missing("No card", "[card]\npresent = false\n") + Without("/dev/mmcblk0p1") +
                       Without("/etc/mtab") + Without("/sys/bus/iio/devices/iio:device0") +
                       Without("/dev/mem") +
                       Missing("Another machine", "[board]\npresent = false\n");
    sound.SetMixer("integer \"Master Playback Volume\" 0 63 20 20\n");
    text += Missing("A sound card without the switch", "");
    sound.TakeAwayMixer();
    text += Missing("No sound card", "");
    EXPECT_TRUE(MatchesGoldenFile(text, "service/golden/board-check.txt"));
}

TEST_F(ServiceBoardCheck, DrivesNothingAndKeepsNothing) {
    const SimulatedCall call = SimulateService({"board-check"});
    for (const std::string& write : LinesWith(call.events, " write ")) {
        EXPECT_THAT(write, testing::ContainsRegex("/sys/class/gpio/(un)?export \"[0-9]+\"$"));
    }
    EXPECT_THAT(call.left, testing::Not(testing::HasSubstr(" exported ")));
    EXPECT_THAT(call.left, testing::Not(testing::HasSubstr("line ")));
}

TEST_F(ServiceBoardCheck, LeavesAloneWhatIsExported) {
    const std::string left = "line A2 exported low none\n"
                             "line B18 exported in both\n"
                             "channel 0 exported 1000000 300000 1\n";
    const SimulatedCall call = SimulateService({"board-check"}, "", left);
    EXPECT_EQ(call.result.status, 0);
    for (const std::string& line : LinesOf(left)) {
        EXPECT_THAT(call.left, testing::HasSubstr(line));
    }
    EXPECT_THAT(call.events, testing::Not(testing::ContainsRegex("export \"(2|50)\"")));
}

// A driver that names its lines otherwise exports them all the same.
TEST_F(ServiceBoardCheck, GivesBackALineThatItDoesNotFind) {
    const SimulatedCall call =
        SimulateService({"board-check"}, "[board]\nmissing = [\"/sys/class/gpio/pioB15\"]\n");
    EXPECT_THAT(call.left, testing::Not(testing::HasSubstr(" exported ")));
}

TEST_F(ServiceBoardCheck, TellsOfALineThatCannotBeGivenBack) {
    const std::string board =
        "[[fault]]\ncall = \"write\"\npath = \"/sys/class/gpio/unexport\"\nerrno = \"EIO\"\n";
    const CommandResult result = SimulateService({"board-check"}, board).result;
    EXPECT_THAT(LinesWith(result.output, "A2, "),
                testing::ElementsAre(testing::EndsWith("cannot be given back")));
    EXPECT_EQ(result.status, 1);
}

// The commands of the guide with what they print, as it shows them: "    $ tavrelin-service card".
std::vector<std::string> TranscriptsOf(const std::string& page) {
    std::vector<std::string> transcripts;
    bool inTranscript = false;
    for (const std::string& line : LinesOf(page)) {
        if (line.rfind("    $ tavrelin-service ", 0) == 0) {
            transcripts.emplace_back();
            inTranscript = true;
        }
        inTranscript = inTranscript && line.rfind("    ", 0) == 0;
        if (inTranscript) {
            transcripts.back() += line.substr(4) + "\n";
        }
    }
    return transcripts;
}

// On a board whose light was switched on by hand, and whose pump somebody turns.
TEST_F(ServiceBoardCheck, PrintsLikeEveryCommandWhatTheGuideShows) {
    const std::string board = "[[lines.event]]\nat = 3.2\nline = \"B18\"\nlevel = 0\n";
    std::string left = "channel 0 exported 1000000 300000 1\n";
    const std::vector<std::string> shown = TranscriptsOf(TextOf(InCheckout("docs/bring-up.md")));
    EXPECT_EQ(shown.size(), 8U);
    for (const std::string& transcript : shown) {
        Words words = Split(LinesOf(transcript).front(), ' ');
        words.erase(words.begin(), words.begin() + 2);
        const SimulatedCall call = SimulateService(words, board, left);
        EXPECT_EQ(Transcript(words, call.result), transcript);
        left = call.left;
    }
}

} // namespace
} // namespace tavrelin
