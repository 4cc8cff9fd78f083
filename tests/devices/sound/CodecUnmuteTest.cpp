#include "tests/devices/sound/CodecTest.h"

#include <cerrno>
#include <string>
#include <vector>

namespace tavrelin {
namespace {

using Steps = std::vector<std::string>;

constexpr const char* kFailure = "Codec::Unmute failed!\n";

class CodecUnmute : public CodecTest {};

TEST_F(CodecUnmute, SwitchesBothChannelsOnAndNothingElse) {
    const Codec codec;
    EXPECT_TRUE(codec.Ready());
    EXPECT_TRUE(codec.Unmute());
    EXPECT_EQ(card.Mixer(), MixerText("1 1", "20 20"));
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST_F(CodecUnmute, TakesTheMixersStepsInOrder) {
    const Codec codec;
    const std::size_t before = calls.Made().size();
    EXPECT_TRUE(codec.Unmute());
    EXPECT_EQ(
        Steps(calls.Made().begin() + static_cast<std::ptrdiff_t>(before), calls.Made().end()),
        (Steps{"snd_mixer_selem_id_malloc", "snd_mixer_open 0", "snd_mixer_attach default",
               "snd_mixer_selem_register", "snd_mixer_load",
               "snd_mixer_find_selem Output Mixer HiFi 0", "snd_mixer_selem_has_playback_switch",
               "snd_mixer_selem_set_playback_switch_all 1", "snd_mixer_selem_get_playback_switch 0",
               "snd_mixer_selem_get_playback_switch 1", "snd_mixer_close"}));
}

TEST_F(CodecUnmute, SwitchesTheOtherChannelOnTooWhenOneIsOn) {
    const Codec codec;
    for (const char* one : {"1 0", "0 1", "1 1"}) {
        card.SetMixer(MixerText(one, "20 20"));
        EXPECT_TRUE(codec.Unmute());
        EXPECT_EQ(card.Mixer(), MixerText("1 1", "20 20"));
    }
}

TEST_F(CodecUnmute, FailsWithoutTheOutputElement) {
    const std::string volumeOnly = "integer \"Master Playback Volume\" 0 63 20 20\n";
    card.SetMixer(volumeOnly);
    const Codec codec;
    EXPECT_TRUE(codec.Ready());
    EXPECT_FALSE(codec.Unmute());
    EXPECT_EQ(console.Output(), kFailure);
    EXPECT_EQ(card.Mixer(), volumeOnly);
}

TEST_F(CodecUnmute, FailsWhenTheOutputElementHasNoSwitch) {
    const std::string noSwitch = "integer \"Output Mixer HiFi Playback Volume\" 0 63 20 20\n";
    card.SetMixer(noSwitch);
    const Codec codec;
    EXPECT_FALSE(codec.Unmute());
    EXPECT_EQ(console.Output(), kFailure);
    EXPECT_EQ(card.Mixer(), noSwitch);
    EXPECT_EQ(calls.Count("snd_mixer_selem_set_playback_switch_all"), 0U);
    EXPECT_EQ(calls.Count("snd_mixer_close"), 1U);
}

TEST_F(CodecUnmute, FailsOnAMixerWithoutAnyElement) {
    card.SetMixer("");
    const Codec codec;
    EXPECT_FALSE(codec.Unmute());
    EXPECT_EQ(console.Output(), kFailure);
}

TEST_F(CodecUnmute, FailsWhenFrontLeftThenReadsOff) {
    const Codec codec;
    calls.AnswerSwitch(0, 0);
    EXPECT_FALSE(codec.Unmute());
    EXPECT_EQ(console.Output(), kFailure);
}

TEST_F(CodecUnmute, FailsWhenFrontRightThenReadsOff) {
    const Codec codec;
    calls.AnswerSwitch(1, 0);
    EXPECT_FALSE(codec.Unmute());
    EXPECT_EQ(console.Output(), kFailure);
}

// Each step that may fail, one at a time; a switch is there only when the answer is exactly 1.
const std::vector<OddAnswer> kFailures = {
    {"snd_mixer_selem_id_malloc", -ENOMEM},
    {"snd_mixer_open", -ENOMEM},
    {"snd_mixer_attach", -ENODEV},
    {"snd_mixer_selem_register", -EINVAL},
    {"snd_mixer_load", -EIO},
    {"snd_mixer_find_selem", 0},
    {"snd_mixer_selem_has_playback_switch", 0},
    {"snd_mixer_selem_has_playback_switch", 2},
    {"snd_mixer_selem_has_playback_switch", -EINVAL},
    {"snd_mixer_selem_set_playback_switch_all", -EIO},
    {"snd_mixer_selem_get_playback_switch", -EIO, 1},
    {"snd_mixer_selem_get_playback_switch", -EIO, 2},
    {"snd_mixer_close", -EIO},
};

class CodecUnmuteStep : public CodecTest, public testing::WithParamInterface<OddAnswer> {};

TEST_P(CodecUnmuteStep, ThatFailsMakesUnmuteFailWithItsOneMessage) {
    const Codec codec;
    calls.Answer(GetParam().call, GetParam().result, GetParam().occurrence);
    EXPECT_FALSE(codec.Unmute());
    EXPECT_EQ(console.Output(), kFailure);
    EXPECT_TRUE(codec.Unmute()) << "a later attempt is free of the failure";
    EXPECT_EQ(card.Mixer(), MixerText("1 1", "20 20"));
}

INSTANTIATE_TEST_SUITE_P(Each, CodecUnmuteStep, testing::ValuesIn(kFailures),
                         [](const auto& each) { return NameOf(each.param, each.index); });

} // namespace
} // namespace tavrelin
