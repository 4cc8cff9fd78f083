#include "devices/MixerElement.h"
#include "tests/devices/sound/CodecTest.h"

#include <string>
#include <type_traits>
#include <vector>

namespace tavrelin {
namespace {

using Steps = std::vector<std::string>;

static_assert(!std::is_copy_constructible_v<MixerElement> &&
              !std::is_copy_assignable_v<MixerElement>);
static_assert(!std::is_move_constructible_v<MixerElement> &&
              !std::is_move_assignable_v<MixerElement>);

constexpr const char* kFailure = "Codec::Unmute failed!\n";

using CodecUnmute = CodecAtHand;

TEST_F(CodecUnmute, SwitchesBothChannelsOnAndNothingElse) {
    EXPECT_TRUE(codec.Ready());
    EXPECT_TRUE(codec.Unmute());
    EXPECT_EQ(card.Mixer(), MixerText("1 1", "20 20"));
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(CodecUnmute, TakesTheMixersStepsInOrder) {
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
    for (const char* one : {"1 0", "0 1", "1 1"}) {
        card.SetMixer(MixerText(one, "20 20"));
        EXPECT_TRUE(codec.Unmute());
        EXPECT_EQ(card.Mixer(), MixerText("1 1", "20 20"));
    }
}

TEST_F(CodecUnmute, FailsWithoutAnOutputElementThatHasASwitch) {
    for (const char* mixer : {"integer \"Master Playback Volume\" 0 63 20 20\n",
                              "integer \"Output Mixer HiFi Playback Volume\" 0 63 20 20\n", ""}) {
        card.SetMixer(mixer);
        EXPECT_FALSE(codec.Unmute());
        EXPECT_EQ(card.Mixer(), mixer);
    }
    EXPECT_EQ(console.Output(), std::string(kFailure) + kFailure + kFailure);
    EXPECT_EQ(calls.Count("snd_mixer_selem_set_playback_switch_all"), 0U);
    EXPECT_EQ(calls.Count("snd_mixer_close"), 3U);
}

TEST_F(CodecUnmute, FailsWhenAFrontChannelThenReadsOff) {
    for (const int channel : {0, 1}) {
        calls.AnswerSwitch(channel, 0);
        EXPECT_FALSE(codec.Unmute());
        calls.AnswerSwitch(channel, 1);
    }
    EXPECT_EQ(console.Output(), std::string(kFailure) + kFailure);
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

class CodecUnmuteStep : public CodecAtHand, public testing::WithParamInterface<OddAnswer> {};

TEST_P(CodecUnmuteStep, ThatFailsMakesUnmuteFailWithItsOneMessage) {
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
