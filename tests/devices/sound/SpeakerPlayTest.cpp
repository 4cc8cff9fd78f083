#include "tests/devices/sound/ProcessCalls.h"
#include "tests/devices/sound/SpeakerTest.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>

#include <unistd.h>

#include <cstdint>
#include <iostream>
#include <string>

namespace tavrelin {
namespace {

class SpeakerPlay : public SpeakerTest {
  protected:
    [[nodiscard]] std::uint64_t SignalsSent() const { return board.Calls("kill"); }
};

TEST_F(SpeakerPlay, RepeatsTheFileInAChildForEver) {
    Speaker speaker;
    EXPECT_EQ(speaker.Player(), kNobody);
    EXPECT_TRUE(speaker.Play("alarm.wav", 0));
    EXPECT_EQ(Offspring::Children(), std::vector<pid_t>{speaker.Player()});
    for (int repetition = 0; repetition < 5; ++repetition) {
        EXPECT_EQ(tools.NextCall(), kAlarm);
        tools.FinishPlaying();
    }
}

// Nothing of it waits in a buffer.
TEST_F(SpeakerPlay, IsAnnouncedAtOnceByBothProcesses) {
    const TestFolder folder;
    const Fifo shown(folder.Path("shown"));
    const StreamInto pipe(STDOUT_FILENO, shown);
    Speaker speaker;
    Begin(speaker);
    const std::string own = std::to_string(::getpid());
    const std::string child = std::to_string(speaker.Player());
    EXPECT_THAT(LinesOf(shown.Rest()),
                testing::UnorderedElementsAre(
                    "In Child Process: Own pid = " + child + " and Parent pid = " + own,
                    "In Parent Process: Own pid = " + own + " and Child pid = " + child));
    EXPECT_EQ(console.Error(), "");
}

TEST_F(SpeakerPlay, ShowsTextThatWaitedToBeShownOnlyOnce) {
    Speaker speaker;
    std::cout << "Priming ";
    Begin(speaker);
    const std::string said = console.Output();
    EXPECT_THAT(said, testing::StartsWith("Priming In "));
    EXPECT_EQ(LinesWith(said, "Priming ").size(), 1U);
}

TEST_F(SpeakerPlay, PausesAsLongAsItWasToldBetweenRepetitions) {
    const TestFolder folder;
    const Fifo pauses(folder.Path("pauses"));
    RecordPausesTo(pauses.Descriptor());
    for (const std::uint32_t pause : {0U, 250000U, 3600000000U, 4294967295U}) {
        Speaker speaker;
        EXPECT_TRUE(speaker.Play("alarm.wav", pause));
        EXPECT_EQ(tools.NextCall(), kAlarm);
        EXPECT_EQ(pauses.Rest(), "");
        tools.FinishPlaying();
        EXPECT_EQ(pauses.Line(), std::to_string(pause));
        EXPECT_EQ(tools.NextCall(), kAlarm);
        EXPECT_EQ(speaker.Stop(), 0);
        tools.FinishPlaying();
        Offspring::AwaitEnd();
    }
    RecordPausesTo(-1);
}

TEST_F(SpeakerPlay, IsRefusedWhileItPlaysAndDisturbsNothing) {
    Speaker speaker;
    Begin(speaker);
    const pid_t player = speaker.Player();
    const std::string before = console.Output();
    EXPECT_FALSE(speaker.Play("other.wav", 0));
    EXPECT_EQ(Console(), (Said{before, "Speaker: already in play\n"}));
    EXPECT_EQ(speaker.Player(), player);
    EXPECT_EQ(board.Calls("fork"), 1U);
    EXPECT_EQ(SignalsSent(), 0U);
    tools.FinishPlaying();
    EXPECT_EQ(tools.NextCall(), kAlarm);
}

TEST_F(SpeakerPlay, IsAChildOfItsOwnForEachSpeaker) {
    Speaker one;
    Speaker other;
    Begin(one);
    EXPECT_TRUE(other.Play("other.wav", 0));
    EXPECT_EQ(tools.NextCall(), "[aplay][-q][other.wav]");
    EXPECT_EQ(one.Stop(), 0);
    EXPECT_FALSE(Offspring::IsGone(other.Player()));
}

TEST_F(SpeakerPlay, HandsTheNameToTheShellAsItStands) {
    for (const auto& [name, call] :
         {std::pair("two words.wav", "[aplay][-q][two][words.wav]"),
          std::pair("'two words.wav'", "[aplay][-q][two words.wav]"),
          std::pair("\"it's.wav\"", "[aplay][-q][it's.wav]"), std::pair("", "[aplay][-q]"),
          std::pair("a.wav; exit", "[aplay][-q][a.wav]")}) {
        Speaker speaker;
        EXPECT_TRUE(speaker.Play(name, 0));
        EXPECT_EQ(tools.NextCall(), call);
    }
}

TEST_F(SpeakerPlay, ThatCannotForkIsToldAndCanBeTriedAgain) {
    Speaker speaker;
    board.Fail("fork", "", EAGAIN);
    EXPECT_FALSE(speaker.Play("alarm.wav", 0));
    EXPECT_EQ(Console(), (Said{"", "Speaker: error in play fork\n"}));
    EXPECT_EQ(speaker.Player(), kNobody);
    EXPECT_TRUE(Offspring::Children().empty());
    EXPECT_EQ(speaker.Stop(), kNobody);
    EXPECT_EQ(SignalsSent(), 0U);
    Begin(speaker);
}

} // namespace
} // namespace tavrelin
