#include "tests/devices/sound/CodecTest.h"

namespace tavrelin {
namespace {

class CodecReadiness : public CodecTest {
  protected:
    /// Asks for everything that a codec does.
    void ExpectAllToFail(const Codec& codec) {
        EXPECT_FALSE(codec.Unmute());
        EXPECT_FALSE(codec.SetVolume(2, 50));
        EXPECT_FALSE(codec.Play());
        EXPECT_EQ(console.Output(), "Codec::Unmute failed!\nCodec::SetVolume failed!\n"
                                    "Codec::Play failed!\n");
    }
    void ExpectNothingDone() {
        EXPECT_EQ(calls.Count("snd_mixer_open") + calls.Count("snd_pcm_open"), 0U);
        EXPECT_EQ(card.Mixer(), MixerText("0 0", "20 20"));
        EXPECT_EQ(card.Played(), "");
    }
};

TEST_F(CodecReadiness, IsThereWithACardAndDoesNotSaveOperationsFromOneThatIsGone) {
    const Codec codec;
    EXPECT_TRUE(codec.Ready());
    ExpectNothingDone();
    EXPECT_EQ(Console(), kSilence);
    card.TakeAwayMixer();
    card.TakeAwayPlayback();
    EXPECT_TRUE(codec.Ready());
    ExpectAllToFail(codec);
}

TEST_F(CodecReadiness, MissingWithoutACardMakesEveryOperationFailAtOnce) {
    card.TakeAwayMixer();
    card.TakeAwayPlayback();
    const Codec codec;
    EXPECT_FALSE(codec.Ready());
    ExpectAllToFail(codec);
    ExpectNothingDone();
}

TEST_F(CodecReadiness, OnceMissingStaysMissingWhenACardComes) {
    calls.Answer("snd_ctl_open", -ENOENT);
    const Codec codec;
    EXPECT_FALSE(codec.Ready());
    ExpectAllToFail(codec);
    ExpectNothingDone();
    EXPECT_TRUE(Codec().Ready());
}

} // namespace
} // namespace tavrelin
