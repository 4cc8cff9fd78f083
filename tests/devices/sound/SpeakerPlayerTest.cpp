// What goes on in the child: the real player, and one that is not there.

#include "tests/devices/sound/SpeakerTest.h"
#include "tests/devices/sound/Sweep.h"
#include "tests/support/TestCard.h"

#include <csignal>
#include <fstream>
#include <string>

namespace tavrelin {
namespace {

/// A signal's handling, set while it lives.
class IgnoredSignal {
  public:
    explicit IgnoredSignal(int number) : number_(number), before_(std::signal(number, SIG_IGN)) {}
    IgnoredSignal(const IgnoredSignal&) = delete;
    IgnoredSignal& operator=(const IgnoredSignal&) = delete;
    IgnoredSignal(IgnoredSignal&&) = delete;
    IgnoredSignal& operator=(IgnoredSignal&&) = delete;
    ~IgnoredSignal() { std::signal(number_, before_); }

  private:
    int number_;
    void (*before_)(int);
};

std::string LittleEndian(std::uint32_t number, unsigned bytes) {
    std::string text;
    for (unsigned byte = 0; byte < bytes; ++byte) {
        text += static_cast<char>((number >> (8 * byte)) & 0xFFU);
    }
    return text;
}

// Two channels of 16 bits, 18000 frames per second.
void WriteSoundFile(const std::string& path, const std::string& samples) {
    const auto size = static_cast<std::uint32_t>(samples.size());
    std::ofstream(path, std::ios::binary)
        << "RIFF" << LittleEndian(36 + size, 4) << "WAVEfmt " << LittleEndian(16, 4)
        << LittleEndian(1, 2) << LittleEndian(2, 2) << LittleEndian(18000, 4)
        << LittleEndian(18000 * 4, 4) << LittleEndian(4, 2) << LittleEndian(16, 2) << "data"
        << LittleEndian(size, 4) << samples;
}

class SpeakerPlayer : public OffspringTest {
  protected:
    TestCard card;
    Fifo errors{card.Path("errors")};
};

TEST_F(SpeakerPlayer, PlaysARealFileOverAndOverBitForBit) {
    const std::string samples = Sweep(16, 256); // 2048 frames, whole periods of the device
    const std::string file = card.Path("alarm.wav");
    WriteSoundFile(file, samples);
    const Fifo played(card.Path("played.fifo"));
    card.PlayInto(played.Path());
    Speaker speaker;
    EXPECT_TRUE(speaker.Play(file, 0));
    for (int repetition = 0; repetition < 20; ++repetition) {
        ASSERT_EQ(Difference(played.Bytes(samples.size()), samples), "");
    }
    EXPECT_EQ(speaker.Stop(), 0);
    static_cast<void>(played.Rest());
    Offspring::AwaitEnd();
    EXPECT_TRUE(Offspring::Children().empty());
}

TEST_F(SpeakerPlayer, ThatIsMissingIsToldByTheShellAndTriedAgain) {
    const TestFolder empty;
    const Environment path("PATH", empty.Path());
    const StreamInto pipe(STDERR_FILENO, errors);
    Speaker speaker;
    EXPECT_TRUE(speaker.Play("alarm.wav", 0));
    for (int repetition = 0; repetition < 3; ++repetition) {
        EXPECT_EQ(errors.Line(), "sh: 1: aplay: not found");
    }
    EXPECT_EQ(speaker.Stop(), 0);
}

TEST_F(SpeakerPlayer, TellsThatTheFileIsMissingAndIsTriedAgain) {
    const StreamInto pipe(STDERR_FILENO, errors);
    Speaker speaker;
    const std::string file = card.Path("missing.wav");
    EXPECT_TRUE(speaker.Play(file, 0));
    for (int repetition = 0; repetition < 3; ++repetition) {
        EXPECT_EQ(errors.Line(), file + ": No such file or directory");
    }
    EXPECT_EQ(speaker.Stop(), 0);
}

// With its children's deaths ignored a process cannot learn how its shell ended.
TEST_F(SpeakerPlayer, ThatNoShellCanRunIsToldEachTime) {
    const TestFolder empty;
    const Environment path("PATH", empty.Path());
    const IgnoredSignal deaths(SIGCHLD);
    const StreamInto pipe(STDERR_FILENO, errors);
    Speaker speaker;
    EXPECT_TRUE(speaker.Play("alarm.wav", 0));
    for (int repetition = 0; repetition < 3; ++repetition) {
        EXPECT_EQ(errors.Line(), "sh: 1: aplay: not found");
        EXPECT_EQ(errors.Line(), "Speaker: error in player");
    }
    EXPECT_EQ(speaker.Stop(), 0);
}

} // namespace
} // namespace tavrelin
