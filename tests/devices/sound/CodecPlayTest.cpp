#include "tests/devices/sound/CodecTest.h"
#include "tests/devices/sound/PlayConsole.h"
#include "tests/devices/sound/Sweep.h"

#include <string>
#include <vector>

namespace tavrelin {
namespace {

using Steps = std::vector<std::string>;

constexpr unsigned kPeriods = 703;
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

class CodecPlay : public CodecTest {};

TEST_F(CodecPlay, WritesTheWholeSweepBitForBit) {
    const Codec codec;
    EXPECT_TRUE(codec.Play());
    EXPECT_EQ(Difference(card.Played(), Sweep(kPeriods, 256)), "");
    EXPECT_EQ(card.Mixer(), MixerText("0 0", "20 20"));
}

TEST_F(CodecPlay, TellsItsSettingsAndEveryPeriod) {
    const Codec codec;
    EXPECT_TRUE(codec.Play());
    EXPECT_EQ(Difference(console.Output(),
                         PlayHeading(128, 18000, 7111, kPeriods) + WholeProgress(128, kPeriods)),
              "");
    EXPECT_EQ(console.Error(), "");
}

TEST_F(CodecPlay, BeginsAndEndsItsReportWithTheseLines) {
    const Codec codec;
    EXPECT_TRUE(codec.Play());
    const std::string head = "period size = 128 frames\n"
                             "buffer size = 18000 frames\n"
                             "the size:val:loops are 512:7111:703\n"
                             "the return_code:loop are 128:702\n"
                             "the frequency is 550\n"
                             "the return_code:loop are 128:701\n"
                             "the frequency is 600\n";
    const std::string tail = "the return_code:loop are 128:1\n"
                             "the frequency is 35600\n"
                             "the return_code:loop are 128:0\n"
                             "the frequency is 35650\n";
    const std::string& said = console.Output();
    EXPECT_EQ(said.substr(0, head.size()), head);
    EXPECT_EQ(said.substr(said.size() - tail.size()), tail);
}

TEST_F(CodecPlay, AsksTheDeviceForTheseSettingsInOrder) {
    const Codec codec;
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
    const Codec codec;
    EXPECT_TRUE(codec.Play());
    EXPECT_EQ(board.Now(), (kPeriods * 128 - 2048) * kNanosecondsPerSecond / 18000);
    EXPECT_EQ(calls.Count("snd_pcm_drain"), 0U);
}

TEST_F(CodecPlay, StartsItsSweepAnewEachTime) {
    const Codec codec;
    EXPECT_TRUE(codec.Play());
    EXPECT_TRUE(codec.Play());
    const std::string once = Sweep(kPeriods, 256);
    EXPECT_EQ(Difference(card.Played(), once + once), "");
}

TEST_F(CodecPlay, TellsTheBufferOfADeviceThatHasOnlyOne) {
    card.SetPlayback("buffer 512");
    const Codec codec;
    EXPECT_TRUE(codec.Play());
    EXPECT_EQ(Difference(console.Output(),
                         PlayHeading(128, 512, 7111, kPeriods) + WholeProgress(128, kPeriods)),
              "");
}

TEST_F(CodecPlay, GoesByThePeriodsOfADeviceThatHasLongerOnes) {
    card.SetPlayback("period 256");
    const Codec codec;
    EXPECT_TRUE(codec.Play());
    EXPECT_EQ(
        Difference(console.Output(), PlayHeading(256, 18000, 14222, 351) + WholeProgress(256, 351)),
        "");
    EXPECT_EQ(Difference(card.Played(), Sweep(351, 512)), "");
}

TEST_F(CodecPlay, GoesByTheRateOfADeviceThatHasAnotherButKeepsItsSamples) {
    card.SetPlayback("rate 48000");
    const Codec codec;
    EXPECT_TRUE(codec.Play());
    EXPECT_EQ(Difference(console.Output(),
                         PlayHeading(128, 48000, 2666, 1875) + WholeProgress(128, 1875)),
              "");
    EXPECT_EQ(Difference(card.Played(), Sweep(1875, 256)), "");
}

} // namespace
} // namespace tavrelin
