// The line that tells on a terminal how far a long run has come.

#include "tests/simulator/Launcher.h"

#include <array>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

namespace tavrelin {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kLimit = "simulate: limit of";

/// A terminal, and what was written on it.
class Terminal {
  public:
    Terminal() : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        if (master_ >= 0 && ::grantpt(master_) == 0 && ::unlockpt(master_) == 0) {
            slave_ = ::open(Name().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        }
        ::fcntl(master_, F_SETFL, O_NONBLOCK);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() {
        ::close(slave_);
        ::close(master_);
    }

    bool Open() const { return slave_ >= 0; }
    std::string Name() const { return ::ptsname(master_); }
    std::string Text() const {
        std::string all;
        std::array<char, 4096> piece{};
        for (ssize_t count = 0; (count = ::read(master_, piece.data(), piece.size())) > 0;) {
            all.append(piece.data(), static_cast<std::size_t>(count));
        }
        return all;
    }

  private:
    int master_;
    int slave_ = -1;
};

class ProgressLine : public testing::Test {
  protected:
    void SetUp() override {
        if (!terminal.Open()) {
            FAIL() << "no pseudo-terminal here: /dev/pts is not mounted";
        }
    }

    /// What a run of a quarter of a second shows on a terminal for errors, with the program's
    /// output as given.
    std::string Shown(const std::string& output, const std::string& pace = "max") const {
        EXPECT_EQ(RunCommand({"sh", "-c",
                              Binary("simulate") + " --real-time 0.25 --pace " + pace + " -- " +
                                  testProgram("troublemaker") + " sleep-again 1000 >" + output +
                                  " 2>" + terminal.Name()})
                      .status,
                  12);
        return terminal.Text();
    }

    Terminal terminal;
};

TEST_F(ProgressLine, StandsOnATerminalThatShowsNothingElse) {
    EXPECT_THAT(Shown("/dev/null"),
                AllOf(StartsWith("\rstep 0, 0 measurements, "), HasSubstr(" s of board time\033[K"),
                      HasSubstr("\r\033[Ksimulate: limit of 0.25 s")))
        << "it is wiped away at the end";
}

TEST_F(ProgressLine, DoesNotMixWithTheProgramsOutput) {
    EXPECT_THAT(Shown(terminal.Name()), StartsWith(kLimit));
}

TEST_F(ProgressLine, IsForRunsAtMaxOnly) {
    EXPECT_THAT(Shown("/dev/null", "1000000"), StartsWith(kLimit));
}

TEST(ProgressInAFile, IsNeverTold) {
    const CommandResult run = SimulateTrouble({"sleep-again", "1000"}, {"--real-time", "0.25"});
    EXPECT_THAT(run.error, StartsWith(kLimit));
}

} // namespace
} // namespace tavrelin
