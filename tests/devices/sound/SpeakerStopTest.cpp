#include "tests/devices/sound/ProcessCalls.h"
#include "tests/devices/sound/SpeakerTest.h"

#include <optional>
#include <string>

namespace tavrelin {
namespace {

using sim::Texts;

using SpeakerStop = SpeakerTest;

TEST_F(SpeakerStop, KillsTheChildAndLeavesNoZombie) {
    Speaker speaker;
    Begin(speaker);
    const pid_t player = speaker.Player();
    board.Forget();
    EXPECT_EQ(speaker.Stop(), 0);
    EXPECT_EQ(board.Events(), (Texts{"kill - signal 9"}));
    EXPECT_EQ(speaker.Player(), kNobody);
    EXPECT_TRUE(Offspring::IsGone(player));
    EXPECT_EQ(console.Error(), "");
}

TEST_F(SpeakerStop, WithNothingPlayingAnswersMinusOneAndSendsNoSignal) {
    Speaker speaker;
    EXPECT_EQ(speaker.Stop(), -1);
    Begin(speaker);
    EXPECT_EQ(speaker.Stop(), 0);
    EXPECT_EQ(speaker.Stop(), -1);
    EXPECT_EQ(board.Calls("kill"), 1U);
}

TEST_F(SpeakerStop, WaitsForTheChildsEndEvenWhenItIsInterrupted) {
    Speaker speaker;
    Begin(speaker);
    const pid_t player = speaker.Player();
    InterruptWaits(2);
    EXPECT_EQ(speaker.Stop(), 0);
    EXPECT_TRUE(Offspring::IsGone(player));
}

TEST_F(SpeakerStop, LetsThePlayerFinishTheRunItHasBegun) {
    Speaker speaker;
    Begin(speaker);
    EXPECT_EQ(speaker.Stop(), 0);
    tools.FinishPlaying();
    Offspring::AwaitEnd();
    EXPECT_EQ(tools.OtherCalls(), "") << "nobody starts another run";
    EXPECT_TRUE(Offspring::Children().empty());
}

TEST_F(SpeakerStop, IsFollowedByANewChildWhenPlayedAgain) {
    Speaker speaker;
    Begin(speaker);
    EXPECT_EQ(speaker.Stop(), 0);
    tools.FinishPlaying();
    Offspring::AwaitEnd();
    Begin(speaker);
    EXPECT_EQ(board.Calls("fork"), 2U);
    EXPECT_EQ(Offspring::Children(), std::vector<pid_t>{speaker.Player()});
    EXPECT_EQ(speaker.Stop(), 0);
}

TEST_F(SpeakerStop, AnswersThatTheChildCouldNotBeKilledAndForgetsItAllTheSame) {
    Speaker speaker;
    Begin(speaker);
    const pid_t player = speaker.Player();
    board.Fail("kill", "", EPERM);
    EXPECT_EQ(speaker.Stop(), -1);
    EXPECT_EQ(speaker.Player(), kNobody);
    EXPECT_FALSE(Offspring::IsGone(player));
    Begin(speaker);
    EXPECT_NE(speaker.Player(), player);
}

TEST_F(SpeakerStop, HappensWhenTheSpeakerIsDestroyed) {
    std::optional<Speaker> speaker(std::in_place);
    Begin(*speaker);
    const pid_t player = speaker->Player();
    board.Forget();
    speaker.reset();
    EXPECT_EQ(board.Events(), (Texts{"kill - signal 9"}));
    EXPECT_TRUE(Offspring::IsGone(player));
}

TEST_F(SpeakerStop, IsNotNeededWhenAnIdleSpeakerIsDestroyed) {
    {
        const Speaker never;
        Speaker noMore;
        Begin(noMore);
        EXPECT_EQ(noMore.Stop(), 0);
        board.Forget();
    }
    EXPECT_EQ(board.Events(), Texts{});
}

} // namespace
} // namespace tavrelin
