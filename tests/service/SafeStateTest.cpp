#include "tests/service/ServiceRun.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

// A run that was killed in step 3, with all that it can switch on, while the pump moved.
constexpr const char* kAllOn = "line A2 exported low none\n"
                               "line A3 exported high none\n"
                               "line A4 exported high none\n"
                               "line A5 exported high none\n"
                               "line A6 exported high none\n"
                               "line B15 exported low none\n"
                               "line B18 exported in both\n"
                               "channel 0 exported 1000000 300000 1\n"
                               "channel 1 exported 625000 312500 1\n"
                               "channel 2 exported 1562500 781250 1\n"
                               "channel 3 exported 1000000 1000000 1\n";

std::string SafeState(const std::string& board, const std::string& left = kAllOn) {
    return SimulatedTranscript({"safe-state"}, board, left);
}

std::string WithFault(const std::string& call, const std::string& path) {
    return "[[fault]]\ncall = \"" + call + "\"\nerrno = \"EIO\"\nrepeat = \"forever\"\npath = \"" +
           path + "\"\n";
}

std::string Without(const std::string& path) {
    return "[board]\nmissing = [\"" + path + "\"]\n";
}

TEST(ServiceSafeState, SaysWhatItDoes) {
    EXPECT_TRUE(MatchesGoldenFile(
        "All on:\n" + SafeState("") + "\nFrom switching on:\n" + SafeState("", "") +
            "\nOf an ended run that left the pump held, of one that came to its second line:\n" +
            SafeState("", "line A2 free low none\n") +
            SafeState("", "channel 0 exported 1000000 300000 1\nline B15 exported in none\n") +
            "\nA valve that stays open, a driver chip that stays enabled:\n" +
            SafeState(WithFault("write", "/sys/class/pwm/pwmchip0/pwm3/enable")) +
            SafeState(WithFault("write", "/sys/class/gpio/pioA2/direction")) +
            "\nA line that stays exported, one that nobody can have, one of another name:\n" +
            SafeState(WithFault("write", "/sys/class/gpio/unexport"),
                      "line A3 exported high none\n") +
            SafeState(WithFault("write", "/sys/class/gpio/export"), "") +
            SafeState(Without("/sys/class/gpio/pioA2"), "") +
            "\nNo lines, no channels, neither:\n" + SafeState(Without("/sys/class/gpio"), "") +
            SafeState(Without("/sys/class/gpio")) + SafeState(Without("/sys/class/pwm"), "") +
            SafeState("[board]\npresent = false\n", ""),
        "service/golden/safe-state.txt"));
}

TEST(ServiceSafeState, SwitchesAllOffBeforeItGivesAnythingBack) {
    const std::vector<std::string> writes =
        LinesWith(SimulateService({"safe-state"}, "", kAllOn).events, " write ");
    EXPECT_THAT(std::vector(writes.begin(), writes.begin() + 6),
                testing::ElementsAre("0 1 write /sys/class/pwm/pwmchip0/pwm3/enable \"0\"",
                                     "0 1 write /sys/class/pwm/pwmchip0/pwm1/enable \"0\"",
                                     "0 1 write /sys/class/pwm/pwmchip0/pwm2/enable \"0\"",
                                     "0 1 write /sys/class/pwm/pwmchip0/pwm0/enable \"0\"",
                                     "0 1 write /sys/class/gpio/pioA2/direction \"high\"",
                                     "0 1 write /sys/class/gpio/pioB15/direction \"high\""));
    EXPECT_THAT(std::vector(writes.begin() + 6, writes.end()),
                testing::Each(testing::HasSubstr("/unexport ")));
    EXPECT_EQ(writes.size(), 6U + 11U);
}

// Once: the kernel had no memory for the question, say.
TEST(ServiceSafeState, LeavesNothingOnUnsaidWhenAQuestionFails) {
    for (const int occurrence : {1, 2, 3, 4}) {
        const std::string fault =
            "[[fault]]\ncall = \"access\"\nerrno = \"ENOMEM\"\noccurrence = " +
            std::to_string(occurrence) + "\npath = ";
        EXPECT_THAT(SafeState(fault + "\"/sys/class/pwm/pwmchip0/\"\n"),
                    testing::HasSubstr("PWM 3, sample valve: switched off"))
            << occurrence;
        EXPECT_THAT(SafeState(fault + "\"/sys/class/pwm/pwmchip0/\"\n",
                              "channel 3 free 1000000 1000000 1\n"),
                    testing::AnyOf(testing::HasSubstr("PWM 3, sample valve: switched off"),
                                   testing::HasSubstr("no /sys/class/pwm/pwmchip0/ here")))
            << occurrence;
    }
}

TEST(ServiceSafeState, LeavesTheLinesOfOthersAsTheyAre) {
    const std::string others = "line A0 exported low none\n"
                               "line B17 exported in falling\n"
                               "line C27 exported high none\n"
                               "line D16 exported low none\n";
    const SimulatedCall call = SimulateService({"safe-state"}, "", others + kAllOn);
    EXPECT_EQ(call.result.status, 0);
    for (const std::string& line : LinesOf(others)) {
        EXPECT_THAT(call.left, testing::HasSubstr(line));
    }
    EXPECT_EQ(LinesWith(call.left, " exported ").size(), 4U);
}

// A channel that runs though nobody has exported it, and an enabled chip, are stopped as well.
TEST(ServiceSafeState, LooksAtWhatNobodyHasExported) {
    const SimulatedCall call =
        SimulateService({"safe-state"}, "",
                        "line B15 free low none\nchannel 2 free 1562500 781250 1\n"
                        "channel 3 free 1000000 1000000 1\n");
    EXPECT_EQ(call.result.output, "PWM 3, sample valve: switched off\n"
                                  "PWM 2, stirrer: switched off\n"
                                  "B15, stirrer, driver chip: disabled\n");
    EXPECT_EQ(LinesWith(call.left, " exported ").size(), 0U);
    EXPECT_THAT(call.left, testing::HasSubstr("line B15 free high none\n"));
    EXPECT_THAT(call.left, testing::HasSubstr("channel 3 free 1000000 1000000 0\n"));
}

} // namespace
} // namespace tavrelin
