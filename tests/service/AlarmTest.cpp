#include "service/Diagnostics.h"

#include "tests/devices/sound/SpeakerTest.h"

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>

namespace tavrelin {
namespace {

using sim::Texts;

constexpr const char* kUnmute = "[amixer][set][-q][Output Mixer HiFi][unmute]";
constexpr const char* kFullVolume = "[amixer][set][-q][Master][100%,100%]";
constexpr const char* kPlay = "[aplay][-q][alarm.wav]";

/// A board whose sound tools tell how they are called.
class Alarm : public SpeakerTest {
  protected:
    void ExpectCalls(const Texts& calls) const {
        for (const std::string& call : calls) {
            EXPECT_EQ(tools.NextCall(), call);
        }
    }
};

TEST_F(Alarm, WithoutASpeakerIsRefusedAndTouchesNothing) {
    EXPECT_FALSE(SoundAlarm(nullptr));
    EXPECT_EQ(tools.OtherCalls(), "");
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(board.Calls("system") + board.Calls("fork"), 0U);
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "");
}

TEST_F(Alarm, UnmutesTurnsUpAndRepeatsTheFileWithoutWaitingForItsEnd) {
    Speaker speaker;
    EXPECT_TRUE(SoundAlarm(&speaker));
    ExpectCalls({kUnmute, kFullVolume});
    EXPECT_EQ(tools.NextCall(), kPlay); // and plays on until the test lets it finish
    EXPECT_EQ(Offspring::Children(), std::vector<pid_t>{speaker.Player()});
    EXPECT_EQ(console.Error(), "");
    for (int repetition = 0; repetition < 3; ++repetition) { // back to back
        tools.FinishPlaying();
        EXPECT_EQ(tools.NextCall(), kPlay);
    }
}

TEST_F(Alarm, DoesNotMindWhatTheMixerSays) {
    tools.FailMixer(1);
    Speaker speaker;
    EXPECT_TRUE(SoundAlarm(&speaker));
    ExpectCalls({kUnmute, kFullVolume, kPlay});
}

TEST_F(Alarm, PlaysThoughNoShellCouldBeRunForTheMixer) {
    board.Fail("system", "", EAGAIN, 1);
    board.Fail("system", "", EAGAIN, 2);
    Speaker speaker;
    EXPECT_TRUE(SoundAlarm(&speaker));
    EXPECT_EQ(tools.NextCall(), kPlay);
}

TEST_F(Alarm, FailsWhenThePlayerCannotBeStarted) {
    board.Fail("fork", "", EAGAIN);
    Speaker speaker;
    EXPECT_FALSE(SoundAlarm(&speaker));
    ExpectCalls({kUnmute, kFullVolume});
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "Speaker: error in play fork\n");
}

TEST_F(Alarm, ThatSoundsIsNotStartedAgain) {
    Speaker speaker;
    EXPECT_TRUE(SoundAlarm(&speaker));
    ExpectCalls({kUnmute, kFullVolume, kPlay});
    EXPECT_FALSE(SoundAlarm(&speaker));
    ExpectCalls({kUnmute, kFullVolume});
    EXPECT_EQ(console.Error(), "Speaker: already in play\n");
    EXPECT_EQ(board.Calls("fork"), 1U);
}

/// The signals that ask a program to end, and that who plays an alarm catches.
class AlarmsChild : public Alarm, public testing::WithParamInterface<int> {};

TEST_P(AlarmsChild, EndsBySignalsThatItsParentCatches) {
    const auto before = std::signal(GetParam(), [](int) {});
    Speaker speaker;
    EXPECT_TRUE(speaker.Play("alarm.wav", 60'000'000));
    EXPECT_EQ(tools.NextCall(), kPlay);
    tools.FinishPlaying();
    // From now on it sleeps a minute. Until then system() has INT ignored, so that one is repeated.
    const auto ended = static_cast<int>(::syscall(SYS_pidfd_open, speaker.Player(), 0));
    pollfd child{ended, POLLIN, 0};
    int status = 0;
    for (int tries = 0; ::waitpid(speaker.Player(), &status, WNOHANG) == 0 && tries < 1000;
         ++tries) {
        ::kill(speaker.Player(), GetParam());
        ::poll(&child, 1, 10);
    }
    ::close(ended);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), GetParam());
    std::signal(GetParam(), before);
}

INSTANTIATE_TEST_SUITE_P(, AlarmsChild, testing::Values(SIGINT, SIGTERM, SIGHUP));

} // namespace
} // namespace tavrelin
