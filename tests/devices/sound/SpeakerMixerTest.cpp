#include "tests/devices/sound/SpeakerTest.h"
#include "tests/support/TestCard.h"

#include <gmock/gmock.h>

#include <string>

namespace tavrelin {
namespace {

using sim::Texts;
using testing::AllOf;
using testing::HasSubstr;

using SpeakerMixer = SpeakerTest;

TEST_F(SpeakerMixer, IsUnmutedAndMutedByTheseCommandLines) {
    EXPECT_TRUE(Speaker::SetMute(true));
    EXPECT_TRUE(Speaker::SetMute(false));
    EXPECT_EQ(board.Events(), (Texts{"system - \"amixer set -q 'Output Mixer HiFi' unmute\" 0",
                                     "system - \"amixer set -q 'Output Mixer HiFi' mute\" 0"}));
    EXPECT_EQ(tools.NextCall(), "[amixer][set][-q][Output Mixer HiFi][unmute]");
    EXPECT_EQ(tools.NextCall(), "[amixer][set][-q][Output Mixer HiFi][mute]");
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(SpeakerMixer, TakesBothVolumesInOneCommandLine) {
    EXPECT_TRUE(Speaker::SetVolume(100, 100));
    EXPECT_TRUE(Speaker::SetVolume(0, 0));
    EXPECT_TRUE(Speaker::SetVolume(7, 93));
    EXPECT_EQ(board.Events(), (Texts{"system - \"amixer set -q Master 100%,100%\" 0",
                                     "system - \"amixer set -q Master 0%,0%\" 0",
                                     "system - \"amixer set -q Master 7%,93%\" 0"}));
    EXPECT_EQ(tools.NextCall(), "[amixer][set][-q][Master][100%,100%]");
    EXPECT_EQ(tools.NextCall(), "[amixer][set][-q][Master][0%,0%]");
    EXPECT_EQ(tools.NextCall(), "[amixer][set][-q][Master][7%,93%]");
}

TEST_F(SpeakerMixer, RunsNothingForAVolumeAboveAHundredPercent) {
    EXPECT_FALSE(Speaker::SetVolume(101, 50));
    EXPECT_FALSE(Speaker::SetVolume(50, 101));
    EXPECT_FALSE(Speaker::SetVolume(4294967295U, 4294967295U));
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(tools.OtherCalls(), "");
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(SpeakerMixer, IsNotAskedHowItEnded) {
    tools.FailMixer(1);
    EXPECT_TRUE(Speaker::SetMute(true));
    EXPECT_TRUE(Speaker::SetVolume(50, 50));
    EXPECT_EQ(board.Events(), (Texts{"system - \"amixer set -q 'Output Mixer HiFi' unmute\" 256",
                                     "system - \"amixer set -q Master 50%,50%\" 256"}));
}

TEST_F(SpeakerMixer, ThatIsNotInstalledIsNotMissed) {
    const TestFolder empty;
    const Environment path("PATH", empty.Path());
    EXPECT_TRUE(Speaker::SetMute(true));
    EXPECT_TRUE(Speaker::SetVolume(50, 50));
}

TEST_F(SpeakerMixer, FailsOnlyWhenNoShellCanBeRun) {
    board.FailForever("system", "", EAGAIN);
    EXPECT_FALSE(Speaker::SetMute(true));
    EXPECT_FALSE(Speaker::SetMute(false));
    EXPECT_FALSE(Speaker::SetVolume(50, 50));
    EXPECT_EQ(tools.OtherCalls(), "");
    EXPECT_EQ(Console(), kSilence);
}

/// The mixer tool itself, on a card without hardware.
class RealMixerTool : public BoardTest {
  protected:
    TestCard card;
};

TEST_F(RealMixerTool, SwitchesTheOutputOnAndOff) {
    EXPECT_TRUE(Speaker::SetMute(true));
    EXPECT_EQ(card.Mixer(), MixerText("1 1", "20 20")) << "needs amixer, of alsa-utils";
    EXPECT_TRUE(Speaker::SetMute(false));
    EXPECT_EQ(card.Mixer(), MixerText("0 0", "20 20"));
}

// It rounds, where the codec cuts.
TEST_F(RealMixerTool, SetsTheVolumeOfEachChannel) {
    EXPECT_TRUE(Speaker::SetVolume(100, 100));
    EXPECT_EQ(card.Mixer(), MixerText("0 0", "63 63")) << "needs amixer, of alsa-utils";
    EXPECT_TRUE(Speaker::SetVolume(0, 50));
    EXPECT_EQ(card.Mixer(), MixerText("0 0", "0 32"));
    EXPECT_FALSE(Speaker::SetVolume(100, 101));
    EXPECT_EQ(card.Mixer(), MixerText("0 0", "0 32"));
}

TEST_F(RealMixerTool, IsNotHeardWhenAnElementIsMissing) {
    card.SetMixer("");
    EXPECT_TRUE(Speaker::SetMute(true));
    EXPECT_TRUE(Speaker::SetVolume(50, 50));
    EXPECT_EQ(card.Mixer(), "");
    EXPECT_EQ(console.Output(), "");
    EXPECT_THAT(console.Error(), AllOf(HasSubstr("Output Mixer HiFi"), HasSubstr("Master")));
}

} // namespace
} // namespace tavrelin
