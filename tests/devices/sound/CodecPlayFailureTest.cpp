#include "tests/devices/sound/CodecTest.h"
#include "tests/devices/sound/PlayConsole.h"
#include "tests/devices/sound/Sweep.h"

#include <string>
#include <vector>

namespace tavrelin {
namespace {

constexpr unsigned kPeriods = 703;
constexpr std::size_t kPeriodBytes = 512;
constexpr unsigned kLostPeriod = 3;

const std::string kWhole = PlayReport(128, 18000, 7111, kPeriods);

// The report of a sweep in which one period was not written as it should be.
std::string ReportWith(unsigned period, long written, const std::string& complaint) {
    const unsigned left = kPeriods - period;
    const std::string lost = PlayProgress(128, left, 500 + 50 * period);
    std::string report = kWhole;
    return report.replace(report.find(lost), lost.size(),
                          complaint + PlayProgress(written, left, 500 + 50 * period));
}

std::string SweepWithout(unsigned period) {
    return Sweep(kPeriods, 256).erase((period - 1) * kPeriodBytes, kPeriodBytes);
}

// What writing one period answers, and what is said about it, literally.
struct OddWrite {
    long written;
    const char* complaint;
    unsigned prepared;
};

void PrintTo(const OddWrite& odd, std::ostream* text) {
    *text << "writing answers " << odd.written;
}

const std::vector<OddWrite> kOddWrites = {
    {-EPIPE, "underrun occurred\n\n", 1},         {-EIO, "error from writei: %s\n\n", 0},
    {-ESTRPIPE, "error from writei: %s\n\n", 0},  {1, "short write, write %d frames\n\n", 0},
    {127, "short write, write %d frames\n\n", 0}, {0, "", 0},
};

class CodecPlayWrite : public CodecAtHand, public testing::WithParamInterface<OddWrite> {};

TEST_P(CodecPlayWrite, ThatGoesWrongIsToldAndTheSweepGoesOn) {
    const OddWrite& odd = GetParam();
    calls.Answer("snd_pcm_writei", odd.written, kLostPeriod);
    EXPECT_TRUE(codec.Play());
    EXPECT_EQ(Difference(console.Output(), ReportWith(kLostPeriod, odd.written, odd.complaint)),
              "");
    EXPECT_EQ(calls.Count("snd_pcm_prepare"), odd.prepared);
    EXPECT_EQ(calls.Count("snd_pcm_writei"), kPeriods);
    EXPECT_EQ(Difference(card.Played(), SweepWithout(kLostPeriod)), "");
}

INSTANTIATE_TEST_SUITE_P(Each, CodecPlayWrite, testing::ValuesIn(kOddWrites), [](const auto& each) {
    return each.param.written < 0 ? "Error" + std::to_string(-each.param.written)
                                  : "Of" + std::to_string(each.param.written) + "Frames";
});

using CodecPlayFailure = CodecAtHand;

// Without being prepared again the device would refuse all that follows.
TEST_F(CodecPlayFailure, OfADeviceThatRanDryIsOvercomeByPreparingIt) {
    card.SetPlayback("underrun_after 1280");
    EXPECT_TRUE(codec.Play());
    EXPECT_EQ(Difference(console.Output(), ReportWith(11, -EPIPE, "underrun occurred\n\n")), "");
    EXPECT_EQ(Difference(card.Played(), SweepWithout(11)), "");
}

TEST_F(CodecPlayFailure, OfPreparingIsNotLookedAt) {
    calls.Answer("snd_pcm_writei", -EPIPE, kLostPeriod);
    calls.Answer("snd_pcm_prepare", -EIO);
    EXPECT_TRUE(codec.Play());
    EXPECT_EQ(Difference(card.Played(), SweepWithout(kLostPeriod)), "");
}

TEST_F(CodecPlayFailure, IsToldWhenThereIsAMixerButNothingToPlayOn) {
    card.TakeAwayPlayback();
    EXPECT_TRUE(codec.Ready());
    EXPECT_FALSE(codec.Play());
    EXPECT_EQ(console.Output(), "Codec::Play failed!\n");
}

TEST_F(CodecPlayFailure, OfTheBufferSizeQueryIsOnlyAPositiveAnswer) {
    calls.Answer("snd_pcm_hw_params_get_buffer_size", -EINVAL);
    EXPECT_TRUE(codec.Play());
    EXPECT_EQ(Difference(console.Output(), kWhole), "");
}

TEST_F(CodecPlayFailure, OfClosingIsToldAfterTheWholeSweep) {
    calls.Answer("snd_pcm_close", -EIO);
    EXPECT_FALSE(codec.Play());
    EXPECT_EQ(Difference(console.Output(), kWhole + "Codec::Play failed!\n"), "");
    EXPECT_EQ(Difference(card.Played(), Sweep(kPeriods, 256)), "");
}

TEST_F(CodecPlayFailure, OfClosingIsAnyAnswerButZero) {
    calls.Answer("snd_pcm_close", 1);
    EXPECT_FALSE(codec.Play());
}

// A device of 192 MHz: a period of it lasts less than the microsecond that the count is by.
TEST_F(CodecPlayFailure, IsAPeriodThatTakesNoTimeAtAll) {
    card.SetPlayback("rate 192000000");
    EXPECT_FALSE(codec.Play());
    EXPECT_EQ(console.Output(), "period size = 128 frames\nbuffer size = 192000000 frames\n"
                                "Codec::Play failed!\n");
}

// Each step before the first sample that may fail, and what was told until then.
struct PlayFailure {
    OddAnswer answer;
    const char* said;
};

void PrintTo(const PlayFailure& failure, std::ostream* text) {
    PrintTo(failure.answer, text);
}

constexpr const char* kSizes = "period size = 128 frames\nbuffer size = 18000 frames\n";

const std::vector<PlayFailure> kFailures = {
    {{"snd_pcm_open", -ENODEV}, ""},
    {{"snd_pcm_open", -EBUSY}, ""},
    {{"snd_pcm_hw_params_malloc", -ENOMEM}, ""},
    {{"snd_pcm_hw_params_any", -EINVAL}, ""},
    {{"snd_pcm_hw_params_set_access", -EINVAL}, ""},
    {{"snd_pcm_hw_params_set_format", -EINVAL}, ""},
    {{"snd_pcm_hw_params_set_channels", -EINVAL}, ""},
    {{"snd_pcm_hw_params_set_rate_near", -EINVAL}, ""},
    {{"snd_pcm_hw_params_set_period_size_near", -EINVAL}, ""},
    {{"snd_pcm_hw_params_get_period_size", -EINVAL, 1}, ""},
    {{"snd_pcm_hw_params_get_buffer_size", 1}, ""},
    {{"snd_pcm_hw_params", -EIO}, kSizes},
    {{"snd_pcm_hw_params_get_period_size", -EINVAL, 2}, kSizes},
    {{"snd_pcm_hw_params_get_period_time", -EINVAL}, kSizes},
};

class CodecPlayStep : public CodecAtHand, public testing::WithParamInterface<PlayFailure> {};

TEST_P(CodecPlayStep, ThatFailsMakesPlayFailWithItsOneMessage) {
    const auto& [answer, said] = GetParam();
    calls.Answer(answer.call, answer.result, answer.occurrence);
    EXPECT_FALSE(codec.Play());
    EXPECT_EQ(console.Output(), std::string(said) + "Codec::Play failed!\n");
    EXPECT_EQ(card.Played(), "");
    EXPECT_EQ(calls.Count("snd_pcm_writei"), 0U);
}

INSTANTIATE_TEST_SUITE_P(Each, CodecPlayStep, testing::ValuesIn(kFailures),
                         [](const auto& each) { return NameOf(each.param.answer, each.index); });

} // namespace
} // namespace tavrelin
