// The line that tells on a terminal how far a long run has come.

#include "tests/simulator/Launcher.h"

#include "tests/support/Text.h"

#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace tavrelin {
namespace {

/// A terminal, and what was written on it.
class Terminal {
  public:
    Terminal() : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        EXPECT_EQ(::grantpt(master_), 0);
        EXPECT_EQ(::unlockpt(master_), 0);
        slave_ = ::open(Name().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        ::fcntl(master_, F_SETFL, O_NONBLOCK);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() {
        ::close(slave_);
        ::close(master_);
    }

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

/// What a run of a quarter of a second shows on a terminal for errors, with the program's output as
/// given.
std::string OnTerminal(const std::string& output, const std::string& pace = "max") {
    const Terminal terminal;
    const std::string command = "" + Binary("simulate") + " --real-time 0.25 --pace " + pace +
                                " -- " + testProgram("troublemaker") + " sleep-again 1000 >" +
                                (output == "terminal" ? terminal.Name() : output) + " 2>" +
                                terminal.Name();
    EXPECT_EQ(RunCommand({"sh", "-c", command}).status, 12);
    return terminal.Text();
}

TEST(ProgressLine, StandsOnATerminalThatShowsNothingElse) {
    const std::string text = OnTerminal("/dev/null");
    EXPECT_EQ(text.find("\rstep 0, 0 measurements, "), 0U);
    EXPECT_TRUE(Contains(text, " s of board time\033[K"));
    EXPECT_TRUE(Contains(text, "\r\033[Ksimulate: limit of 0.25 s"))
        << "it is wiped away at the end";
}

TEST(ProgressLine, DoesNotMixWithTheProgramsOutput) {
    EXPECT_EQ(OnTerminal("terminal").find("simulate: limit of"), 0U);
}

TEST(ProgressLine, IsForRunsAtMaxOnly) {
    EXPECT_EQ(OnTerminal("/dev/null", "1000000").find("simulate: limit of"), 0U);
}

TEST(ProgressLine, NeverGoesToAFile) {
    const CommandResult run = SimulateTrouble({"sleep-again", "1000"}, {"--real-time", "0.25"});
    EXPECT_EQ(run.error.find("simulate: limit of"), 0U);
}

} // namespace
} // namespace tavrelin
