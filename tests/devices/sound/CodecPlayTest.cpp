#include "tests/devices/sound/CodecTest.h"
#include "tests/devices/sound/PlayConsole.h"
#include "tests/devices/sound/Sweep.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace tavrelin {
namespace {

using Steps = std::vector<std::string>;

constexpr unsigned kPeriods = 703;
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

using CodecPlay = CodecAtHand;

TEST_F(CodecPlay, WritesTheWholeSweepBitForBit) {
    EXPECT_TRUE(codec.Play());
    EXPECT_EQ(Difference(card.Played(), Sweep(kPeriods, 256)), "");
    EXPECT_EQ(card.Mixer(), MixerText("0 0", "20 20"));
}

TEST_F(CodecPlay, TellsItsSettingsAndEveryPeriod) {
    EXPECT_TRUE(codec.Play());
    EXPECT_EQ(Difference(console.Output(), PlayReport(128, 18000, 7111, kPeriods)), "");
    EXPECT_EQ(console.Error(), "");
    EXPECT_THAT(console.Output(), testing::StartsWith("period size = 128 frames\n"
                                                      "buffer size = 18000 frames\n"
                                                      "the size:val:loops are 512:7111:703\n"
                                                      "the return_code:loop are 128:702\n"
                                                      "the frequency is 550\n"));
    EXPECT_THAT(console.Output(), testing::EndsWith("the return_code:loop are 128:0\n"
                                                    "the frequency is 35650\n"));
}

TEST_F(CodecPlay, AsksTheDeviceForTheseSettingsInOrder) {
    const auto before = static_cast<std::ptrdiff_t>(calls.Made().size());
    EXPECT_TRUE(codec.Play());
    Steps expected = {"snd_pcm_open default 0 0",
                      "snd_pcm_hw_params_malloc",
                      "snd_pcm_hw_params_any",
                      "snd_pcm_hw_params_set_access RW_INTERLEAVED",
                      "snd_pcm_hw_params_set_format S16_LE",
                      "snd_pcm_hw_params_set_channels 2",
                      "snd_pcm_hw_params_set_rate_near 18000",
                      "snd_pcm_hw_params_set_period_size_near 128",
                      "snd_pcm_hw_params_get_period_size",
                      "snd_pcm_hw_params_get_buffer_size",
                      "snd_pcm_hw_params",
                      "snd_pcm_hw_params_get_period_size",
                      "snd_pcm_hw_params_get_period_time"};
    expected.insert(expected.end(), kPeriods, "snd_pcm_writei 128");
    expected.emplace_back("snd_pcm_close");
    EXPECT_EQ(Steps(calls.Made().begin() + before, calls.Made().end()), expected);
}

// The device is half its buffer of 4096 frames behind; closing drops what it has not played.
TEST_F(CodecPlay, LastsAsLongAsTheSoundAndDoesNotWaitForWhatTheDeviceStillHolds) {
    card.SetPlayback("paced 1");
    EXPECT_TRUE(codec.Play());
    EXPECT_EQ(board.Now(), (kPeriods * 128 - 2048) * kNanosecondsPerSecond / 18000);
    EXPECT_EQ(calls.Count("snd_pcm_drain"), 0U);
}

TEST_F(CodecPlay, StartsItsSweepAnewEachTime) {
    EXPECT_TRUE(codec.Play());
    EXPECT_TRUE(codec.Play());
    const std::string once = Sweep(kPeriods, 256);
    EXPECT_EQ(Difference(card.Played(), once + once), "");
}

/// A device that has one setting of its own, and the whole sweep on it.
struct OtherDevice {
    const char* setting;
    unsigned periodFrames, bufferFrames, periodTime, periods;
};

class CodecPlayOn : public CodecAtHand, public testing::WithParamInterface<OtherDevice> {};

TEST_P(CodecPlayOn, ADeviceWithAnotherSettingGoesByItButKeepsItsSamples) {
    const auto& [setting, frames, buffer, time, periods] = GetParam();
    card.SetPlayback(setting);
    EXPECT_TRUE(codec.Play());
    EXPECT_EQ(Difference(console.Output(), PlayReport(frames, buffer, time, periods)), "");
    EXPECT_EQ(Difference(card.Played(), Sweep(periods, frames * 2)), "");
}

INSTANTIATE_TEST_SUITE_P(Each, CodecPlayOn,
                         testing::Values(OtherDevice{"buffer 512", 128, 512, 7111, kPeriods},
                                         OtherDevice{"period 256", 256, 18000, 14222, 351},
                                         OtherDevice{"rate 48000", 128, 48000, 2666, 1875}));

} // namespace
} // namespace tavrelin
