#include "tests/devices/sound/CodecTest.h"

#include <string>

namespace tavrelin {
namespace {

constexpr const char* kAllFailures = "Codec::Unmute failed!\nCodec::SetVolume failed!\n"
                                     "Codec::Play failed!\n";

class CodecReadiness : public CodecTest {
  protected:
    /// Asks for everything that a codec does.
    static void ExpectAllToFail(const Codec& codec) {
        EXPECT_FALSE(codec.Unmute());
        EXPECT_FALSE(codec.SetVolume(2, 50));
        EXPECT_FALSE(codec.Play());
    }

    [[nodiscard]] bool NothingWasOpened() const {
        return calls.Count("snd_mixer_open") + calls.Count("snd_pcm_open") == 0;
    }
};

TEST_F(CodecReadiness, IsThereWithACard) {
    const Codec codec;
    EXPECT_TRUE(codec.Ready());
    EXPECT_EQ(card.Mixer(), MixerText("0 0", "20 20"));
    EXPECT_EQ(console.Output(), "");
}

TEST_F(CodecReadiness, MissingWithoutACardMakesEveryOperationFailAtOnce) {
    card.TakeAwayMixer();
    card.TakeAwayPlayback();
    const Codec codec;
    EXPECT_FALSE(codec.Ready());
    ExpectAllToFail(codec);
    EXPECT_EQ(console.Output(), kAllFailures);
    EXPECT_TRUE(NothingWasOpened());
}

TEST_F(CodecReadiness, OnceMissingStaysMissingWhenACardComes) {
    calls.Answer("snd_ctl_open", -ENOENT);
    const Codec codec;
    EXPECT_FALSE(codec.Ready());
    ExpectAllToFail(codec);
    EXPECT_EQ(console.Output(), kAllFailures);
    EXPECT_TRUE(NothingWasOpened());
    EXPECT_EQ(card.Mixer(), MixerText("0 0", "20 20"));
    EXPECT_EQ(card.Played(), "");
    EXPECT_TRUE(Codec().Ready());
}

TEST_F(CodecReadiness, OnceThereDoesNotSaveOperationsFromACardThatIsGone) {
    const Codec codec;
    card.TakeAwayMixer();
    card.TakeAwayPlayback();
    EXPECT_TRUE(codec.Ready());
    ExpectAllToFail(codec);
    EXPECT_EQ(console.Output(), kAllFailures);
}

} // namespace
} // namespace tavrelin
