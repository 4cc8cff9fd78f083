// What a card holds when the power goes: with synchronous mounting all that was written, without it
// what the kernel has put there by then.

#include "tests/simulator/Launcher.h"
#include "tests/simulator/RawCalls.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kMountPoint = "/mnt/sd-card";
constexpr const char* kLogFile = "/mnt/sd-card/log.csv";
constexpr int kAppend = O_WRONLY | O_CREAT | O_APPEND;

void Mount(unsigned long flags) {
    EXPECT_EQ(::mount("/dev/mmcblk0p1", kMountPoint, "vfat", flags, ""), 0);
}

class ACardMountedWithoutSync : public testing::Test {
  protected:
    ACardMountedWithoutSync() {
        board.WriteFileOnCard("old.csv", "old\n");
        Mount(0);
    }
    void CutPower() { board.Kernel().cache.Lose(); }
    std::string OnCard(const std::string& name) const { return board.FileOnCard(name); }

    SimulatedBoard board;
};

TEST_F(ACardMountedWithoutSync, LosesWithThePowerWhatWasWrittenAndChanged) {
    Store(kLogFile, "lost\n");
    Store("/mnt/sd-card/old.csv", "new\n");
    EXPECT_EQ(::mkdir("/mnt/sd-card/folder", 0755), 0);
    EXPECT_EQ(Show(kLogFile), "lost\n") << "the kernel has it";
    CutPower();
    EXPECT_EQ(OpenError(kLogFile, O_RDONLY), ENOENT);
    EXPECT_EQ(OpenError("/mnt/sd-card/folder", O_RDONLY), ENOENT);
    EXPECT_EQ(OnCard("old.csv"), "old\n");
}

TEST_F(ACardMountedWithoutSync, KeepsTheNamesAndSizesThatItHad) {
    EXPECT_EQ(::rename("/mnt/sd-card/old.csv", "/mnt/sd-card/new.csv"), 0);
    EXPECT_EQ(::truncate("/mnt/sd-card/new.csv", 1), 0);
    CutPower();
    EXPECT_EQ(OnCard("old.csv"), "old\n");
    EXPECT_EQ(OnCard("new.csv"), "");
}

TEST_F(ACardMountedWithoutSync, KeepsWhatTheProgramHadPutThere) {
    const Descriptor file(kLogFile, kAppend);
    file.Write("kept\n");
    EXPECT_EQ(::fsync(file.Number()), 0);
    file.Write("lost\n");
    Store("/mnt/sd-card/other.csv", "lost\n");
    CutPower();
    EXPECT_EQ(OnCard("log.csv"), "kept\n");
    EXPECT_EQ(OnCard("other.csv"), "");
}

TEST_F(ACardMountedWithoutSync, KeepsTheWritesOfAFileThatIsOpenForSynchronousOnes) {
    Store("/mnt/sd-card/other.csv", "lost\n");
    Descriptor(kLogFile, kAppend | O_SYNC).Write("kept\n");
    CutPower();
    EXPECT_EQ(OnCard("log.csv"), "kept\n");
    EXPECT_EQ(OnCard("other.csv"), "");
}

TEST_F(ACardMountedWithoutSync, KeepsAfter30SecondsWhatHasBeenWrittenByThen) {
    const Descriptor file(kLogFile, kAppend);
    file.Write("first\n");
    board.Elapse(sim::Milliseconds(29'999));
    file.Write("second\n");
    board.Elapse(sim::Milliseconds(1));
    file.Write("third\n");
    CutPower();
    EXPECT_EQ(OnCard("log.csv"), "first\nsecond\n");
}

TEST_F(ACardMountedWithoutSync, KeepsAllOnceItIsUnmountedOrMountedAnewWithSync) {
    Store(kLogFile, "first\n");
    EXPECT_EQ(::umount(kMountPoint), 0);
    Mount(0);
    Descriptor(kLogFile, kAppend).Write("second\n");
    EXPECT_EQ(::mount(nullptr, kMountPoint, nullptr, MS_REMOUNT | MS_SYNCHRONOUS, ""), 0);
    Descriptor(kLogFile, kAppend).Write("third\n");
    CutPower();
    EXPECT_EQ(OnCard("log.csv"), "first\nsecond\nthird\n");
}

TEST_F(ACardMountedWithoutSync, LosesTheSameWhenItIsPulled) {
    Store(kLogFile, "lost\n");
    board.RemoveCard();
    board.Elapse(sim::Seconds(40));
    EXPECT_EQ(::umount(kMountPoint), 0);
    board.InsertCard();
    Mount(0);
    EXPECT_EQ(OpenError(kLogFile, O_RDONLY), ENOENT);
}

TEST(ACardMountedWithSync, LosesNothingWithThePower) {
    SimulatedBoard board;
    Mount(MS_SYNCHRONOUS);
    Store(kLogFile, "kept\n");
    board.Kernel().cache.Lose();
    EXPECT_EQ(board.FileOnCard("log.csv"), "kept\n");
}

class APowerCut : public testing::Test {
  protected:
    CommandResult Run(const std::string& scenario, const std::vector<std::string>& more = {}) {
        WriteText(folder.Path("scenario"), scenario);
        std::vector<std::string> options{"--scenario", folder.Path("scenario"),
                                         "--root",     folder.Path("run"),
                                         "--summary",  folder.Path("summary")};
        options.insert(options.end(), more.begin(), more.end());
        return Simulate(options, {Binary("tavrelin")});
    }
    std::string Log() const { return TextOf(folder.Path("run/card/2026-03-07_logfile.csv")); }

    TestFolder folder;
};

TEST_F(APowerCut, EndsTheRunAndLeavesWhatWasOnTheCard) {
    const CommandResult run =
        Run("[[board.event]]\non = { call = 'write', path = '/mnt/sd-card/*', "
            "occurrence = 3 }\ndo = 'power-cut'\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.error, "");
    EXPECT_THAT(TextOf(folder.Path("summary")), StartsWith("end = \"power cut\"\nstatus = 0\n"));
    EXPECT_EQ(LinesOf(Log()).size(), 8U) << "two steps of four readings";
    EXPECT_FALSE(std::filesystem::exists(folder.Path("run/card-as-it-is")));
}

TEST_F(APowerCut, LeavesABoardWithNothingSetUpOnWhichTheInstrumentGoesOnAppending) {
    Run("[[board.event]]\nat = 7\ndo = 'power-cut'\n");
    EXPECT_THAT(TextOf(folder.Path("run/board")),
                testing::AllOf(testing::Not(HasSubstr(" exported ")),
                               testing::Not(HasSubstr("card mounted")), HasSubstr("shaft ")));
    const std::string before = Log();
    const CommandResult next = Run("", {"--resume", "--measurements", "1"});
    EXPECT_EQ(next.error, "") << "nothing is already used";
    EXPECT_THAT(Log(), StartsWith(before));
    EXPECT_EQ(LinesOf(Log()).size(), LinesOf(before).size() + 56);
}

} // namespace
} // namespace tavrelin
