// The board stands under a program before the program's first instruction, or the program never
// runs.

#include "tests/simulator/Launcher.h"

#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <unistd.h>

namespace tavrelin {
namespace {

namespace fs = std::filesystem;

constexpr int kNotArmed = 14;
constexpr const char* kChip = "/sys/class/pwm/pwmchip0";

/// A launcher and its library of their own, in a folder of any name.
class Installed {
  public:
    explicit Installed(const std::string& name) : place_(fs::canonical(folder_.Path()) / name) {
        fs::create_directories(place_ + "/bin");
        fs::create_directories(place_ + "/lib");
        fs::copy(Binary("simulate"), place_ + "/bin");
        fs::copy(InBuild("lib/libsimulated-board.so"), Library());
    }

    std::string Library() const { return place_ + "/lib/libsimulated-board.so"; }
    CommandResult Run(const Words& program) const {
        Words command{place_ + "/bin/simulate", "--"};
        command.insert(command.end(), program.begin(), program.end());
        return RunCommand(command);
    }

  private:
    TestFolder folder_;
    std::string place_;
};

class FolderName : public testing::TestWithParam<std::string> {};

TEST_P(FolderName, KeepsNoBoardOut) {
    const Installed installed(GetParam());
    fs::copy(testProgram("troublemaker"), installed.Library() + ".program");
    const CommandResult run =
        installed.Run({installed.Library() + ".program", "look-around", kChip});
    EXPECT_THAT(run.output, testing::StartsWith("board yes\n"));
    EXPECT_EQ(run.error, "");
}

INSTANTIATE_TEST_SUITE_P(With, FolderName,
                         testing::Values("plain", "two words", "a:colon", "$ORIGIN", "${LIB}",
                                         "new\nline", "back\\slash"));

TEST(Arming, ComesBeforeTheConstructorsOfTheProgramsLibraries) {
    EXPECT_EQ(Simulate({}, {testProgram("early-riser")}).output, "board at once\n");
}

TEST(Arming, FailsBeforeTheProgramRunsWithADamagedLibrary) {
    const Installed installed("place");
    for (const std::uintmax_t part : {65'536U, 1'000U, 0U}) {
        fs::resize_file(installed.Library(), part);
        const CommandResult run = installed.Run({testProgram("troublemaker"), "speak"});
        EXPECT_EQ(run.status, kNotArmed) << part;
        EXPECT_EQ(run.output, "") << part;
        EXPECT_THAT(run.error, testing::StartsWith("simulate: " + installed.Library() + ": "))
            << part;
    }
    fs::remove(installed.Library());
    EXPECT_EQ(installed.Run({testProgram("troublemaker"), "speak"}).status, kNotArmed);
}

/// A program that starts with another user's rights.
std::string RaisedProgram(const TestFolder& folder) {
    constexpr uid_t nobody = 65534;
    const std::string own = folder.Path("raised");
    fs::copy(testProgram("troublemaker"), own);
    if (::chown(own.c_str(), nobody, nobody) != 0) {
        return "/usr/bin/passwd"; // which is root's
    }
    fs::permissions(own, fs::perms::set_uid, fs::perm_options::add);
    return own;
}

TEST(Arming, FailsForAProgramWithAnothersRights) {
    const TestFolder folder;
    const std::string raised = RaisedProgram(folder);
    const CommandResult run = Simulate({}, {raised, "speak"});
    EXPECT_EQ(run.status, kNotArmed);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.error, "simulate: " + raised +
                             ": starts with another's rights (set-user-ID, set-group-ID or "
                             "capabilities), which keeps the simulated board out\n");
}

} // namespace
} // namespace tavrelin
