#include "tests/devices/sound/CodecTest.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tavrelin {
namespace {

constexpr const char* kFailure = "Codec::SetVolume failed!\n";
constexpr std::uint32_t kLeft = 0;
constexpr std::uint32_t kRight = 1;
constexpr std::uint32_t kAll = 2;

std::string Master(const std::string& rangeAndVolumes) {
    return "integer \"Master Playback Volume\" " + rangeAndVolumes + "\n";
}

using CodecVolume = CodecAtHand;

TEST_F(CodecVolume, GoesToTheChannelsThatTheSelectorNames) {
    for (const auto& [selector, volumes] :
         {std::pair{kAll, "31 31"}, std::pair{kLeft, "31 20"}, std::pair{kRight, "20 31"},
          std::pair{3U, "20 31"}, std::pair{4294967295U, "20 31"}}) {
        card.SetMixer(MixerText("0 0", "20 20"));
        EXPECT_TRUE(codec.SetVolume(selector, 50));
        EXPECT_EQ(card.Mixer(), MixerText("0 0", volumes)) << selector;
    }
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(CodecVolume, IsTheWholePartOfThePercentage) {
    for (const auto& [percent, volumes] :
         {std::pair{0U, "0 0"}, std::pair{1U, "0 0"}, std::pair{2U, "1 1"}, std::pair{50U, "31 31"},
          std::pair{99U, "62 62"}, std::pair{100U, "63 63"}}) {
        EXPECT_TRUE(codec.SetVolume(kAll, percent));
        EXPECT_EQ(card.Mixer(), MixerText("0 0", volumes)) << percent;
    }
}

TEST_F(CodecVolume, AboveAHundredPercentIsRefusedBeforeTheMixerIsOpened) {
    const std::size_t before = calls.Made().size();
    for (const std::uint32_t percent : {101U, 4294967295U}) {
        EXPECT_FALSE(codec.SetVolume(kAll, percent));
    }
    EXPECT_EQ(console.Output(), std::string(kFailure) + kFailure);
    EXPECT_EQ(calls.Made().size(), before);
    EXPECT_EQ(card.Mixer(), MixerText("0 0", "20 20"));
}

TEST_F(CodecVolume, DoesNotCountFromTheLowestOfTheRange) {
    card.SetMixer(Master("-10 53 20 20"));
    EXPECT_TRUE(codec.SetVolume(kAll, 50));
    EXPECT_EQ(card.Mixer(), Master("-10 53 26 26"));
    EXPECT_TRUE(codec.SetVolume(kAll, 0));
    EXPECT_EQ(card.Mixer(), Master("-10 53 0 0"));
}

TEST_F(CodecVolume, AtZeroPercentIsZeroEvenBelowTheRange) {
    card.SetMixer(Master("10 63 20 20"));
    EXPECT_TRUE(codec.SetVolume(kAll, 0));
    EXPECT_EQ(calls.Count("snd_mixer_selem_set_playback_volume_all"), 1U);
    EXPECT_EQ(calls.Made().at(calls.Made().size() - 2),
              "snd_mixer_selem_set_playback_volume_all 0");
    EXPECT_TRUE(codec.SetVolume(kLeft, 0));
    EXPECT_EQ(calls.Made().at(calls.Made().size() - 2), "snd_mixer_selem_set_playback_volume 0 0");
}

TEST_F(CodecVolume, OfARangeBelowZeroIsCutTowardsZero) {
    card.SetMixer(Master("-99 -3 -20 -20"));
    EXPECT_TRUE(codec.SetVolume(kAll, 50));
    EXPECT_EQ(calls.Made().at(calls.Made().size() - 2),
              "snd_mixer_selem_set_playback_volume_all -1");
}

TEST_F(CodecVolume, OfTheWidestRangeDoesNotOverflow) {
    card.SetMixer(Master("0 2147483647 20 20"));
    EXPECT_TRUE(codec.SetVolume(kAll, 100));
    EXPECT_EQ(card.Mixer(), Master("0 2147483647 2147483647 2147483647"));
    EXPECT_TRUE(codec.SetVolume(kAll, 50));
    EXPECT_EQ(card.Mixer(), Master("0 2147483647 1073741823 1073741823"));
}

TEST_F(CodecVolume, FailsWithoutTheMasterElement) {
    const std::string switchOnly = "boolean \"Output Mixer HiFi Playback Switch\" 0 0\n";
    card.SetMixer(switchOnly);
    EXPECT_FALSE(codec.SetVolume(kAll, 50));
    EXPECT_EQ(console.Output(), kFailure);
    EXPECT_EQ(card.Mixer(), switchOnly);
}

// Each step that may fail, one at a time; only 0 is a volume that was set.
struct VolumeFailure {
    OddAnswer answer;
    std::uint32_t selector;
};

void PrintTo(const VolumeFailure& failure, std::ostream* text) {
    PrintTo(failure.answer, text);
}

const std::vector<VolumeFailure> kFailures = {
    {{"snd_mixer_selem_id_malloc", -ENOMEM}, kAll},
    {{"snd_mixer_open", -ENOMEM}, kAll},
    {{"snd_mixer_attach", -ENODEV}, kAll},
    {{"snd_mixer_selem_register", -EINVAL}, kAll},
    {{"snd_mixer_load", -EIO}, kAll},
    {{"snd_mixer_find_selem", 0}, kAll},
    {{"snd_mixer_selem_get_playback_volume_range", -EINVAL}, kAll},
    {{"snd_mixer_selem_set_playback_volume_all", -EIO}, kAll},
    {{"snd_mixer_selem_set_playback_volume_all", 1}, kAll},
    {{"snd_mixer_selem_set_playback_volume", -EIO}, kLeft},
    {{"snd_mixer_selem_set_playback_volume", 1}, kRight},
    {{"snd_mixer_close", -EIO}, kAll},
};

class CodecVolumeStep : public CodecAtHand, public testing::WithParamInterface<VolumeFailure> {};

TEST_P(CodecVolumeStep, ThatFailsMakesSetVolumeFailWithItsOneMessage) {
    const auto& [answer, selector] = GetParam();
    calls.Answer(answer.call, answer.result, answer.occurrence);
    EXPECT_FALSE(codec.SetVolume(selector, 50));
    EXPECT_EQ(console.Output(), kFailure);
    EXPECT_TRUE(codec.SetVolume(kAll, 50)) << "a later attempt is free of the failure";
    EXPECT_EQ(card.Mixer(), MixerText("0 0", "31 31"));
}

INSTANTIATE_TEST_SUITE_P(Each, CodecVolumeStep, testing::ValuesIn(kFailures),
                         [](const auto& each) { return NameOf(each.param.answer, each.index); });

} // namespace
} // namespace tavrelin
