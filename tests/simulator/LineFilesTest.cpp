// The kernel's files of the GPIO lines, met with bare system calls.

#include "tests/simulator/RawCalls.h"

#include "simulator/testing/SimulatedBoard.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

constexpr int kAsAStreamWrites = O_WRONLY | O_CREAT | O_TRUNC;

TEST(LineFiles, AnExportedLineHasADirectoryBehindALink) {
    SimulatedBoard board;
    struct stat status {};
    EXPECT_NE(::stat("/sys/class/gpio/pioB18", &status), 0);
    ASSERT_EQ(Store(kGpioExport, "50"), 0);
    ASSERT_EQ(::stat("/sys/class/gpio/pioB18", &status), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    ASSERT_EQ(::lstat("/sys/class/gpio/pioB18", &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST(LineFiles, ADirectoryOpensForReadingAndCannotBeRead) {
    SimulatedBoard board;
    Store(kGpioExport, "50");
    EXPECT_EQ(Show("/sys/class/gpio/pioB18"), "EISDIR");
    EXPECT_EQ(OpenError("/sys/class/gpio/pioB18", O_WRONLY), EISDIR);
}

TEST(LineFiles, AMissingAttributeOfAnExportedLineIsNeverCreated) {
    SimulatedBoard board;
    Store(kGpioExport, "50");
    EXPECT_EQ(OpenError(LineFile("B18", "active"), kAsAStreamWrites), EACCES);
    EXPECT_EQ(OpenError(LineFile("B18", "active"), O_WRONLY), ENOENT);
    EXPECT_EQ(OpenError(LineFile("B18", "active"), O_RDONLY), ENOENT);
}

TEST(LineFiles, ALineThatIsNotExportedHasNoAttributes) {
    SimulatedBoard board;
    EXPECT_EQ(OpenError(LineFile("B18", "value"), kAsAStreamWrites), ENOENT);
    EXPECT_EQ(OpenError(LineFile("B18", "value"), O_RDONLY), ENOENT);
}

TEST(LineFiles, AnAttributeThatWasTakenAwayIsRefusedAsAMissingOne) {
    SimulatedBoard board;
    Store(kGpioExport, "50");
    board.TakeAway(LineFile("B18", "edge"));
    EXPECT_EQ(OpenError(LineFile("B18", "edge"), kAsAStreamWrites), EACCES);
    board.TakeAway("/sys/class/gpio/pioB18");
    EXPECT_EQ(OpenError(LineFile("B18", "edge"), kAsAStreamWrites), ENOENT);
    EXPECT_EQ(OpenError(LineFile("B18", "value"), O_RDONLY), ENOENT);
    EXPECT_EQ(OpenError("/sys/class/gpio/pioB18", O_RDONLY), ENOENT);
    board.Restore("/sys/class/gpio/pioB18");
    EXPECT_EQ(Show(LineFile("B18", "value")), "1\n");
}

TEST(LineFiles, ExportRefusesAnExportedLineAndNumbersThatNoLineHas) {
    SimulatedBoard board;
    EXPECT_EQ(Store(kGpioExport, "50"), 0);
    EXPECT_EQ(Store(kGpioExport, "50"), EBUSY);
    for (const char* wrong : {"128", "5000", "-1", "abc", "5 1", "99999999999999999999"}) {
        EXPECT_EQ(Store(kGpioExport, wrong), EINVAL) << wrong;
    }
    EXPECT_EQ(Store(kGpioExport, "127\n"), 0);
    EXPECT_TRUE(board.Line("D31").exported);
}

TEST(LineFiles, UnexportRefusesWhatIsNotExported) {
    SimulatedBoard board;
    for (const char* wrong : {"50", "128", "abc"}) {
        EXPECT_EQ(Store(kGpioUnexport, wrong), EINVAL) << wrong;
    }
}

TEST(LineFiles, EachWriteIsOneStore) {
    SimulatedBoard board;
    const Descriptor file(kGpioExport, O_WRONLY);
    EXPECT_EQ(file.Write("5"), 1);
    EXPECT_EQ(file.Write("1"), 1);
    EXPECT_TRUE(board.Line("A5").exported);
    EXPECT_TRUE(board.Line("A1").exported);
    EXPECT_FALSE(board.Line("B19").exported);
}

TEST(LineFiles, WritingNothingStoresNothing) {
    SimulatedBoard board;
    const Descriptor file(kGpioExport, O_WRONLY);
    EXPECT_EQ(file.Write(""), 0);
    EXPECT_EQ(board.WritesTo("gpio"), Texts{});
}

TEST(LineFiles, OnlyAnOutputTakesAValue) {
    SimulatedBoard board;
    Store(kGpioExport, "7");
    EXPECT_EQ(Store(LineFile("A7", "value"), "1"), EPERM);
    EXPECT_EQ(Store(LineFile("A7", "value"), "on"), EPERM);
    Store(LineFile("A7", "direction"), "out");
    EXPECT_EQ(Store(LineFile("A7", "value"), "on"), EINVAL);
    EXPECT_EQ(Store(LineFile("A7", "value"), "5"), 0);
    EXPECT_EQ(Show(LineFile("A7", "value")), "1\n");
}

TEST(LineFiles, DirectionOutDrivesLowAtOnce) {
    SimulatedBoard board;
    Store(kGpioExport, "7");
    board.SetInput("A7", true);
    EXPECT_EQ(Show(LineFile("A7", "value")), "1\n");
    EXPECT_EQ(Store(LineFile("A7", "direction"), "out"), 0);
    EXPECT_EQ(Show(LineFile("A7", "value")), "0\n");
    EXPECT_EQ(Store(LineFile("A7", "direction"), "high"), 0);
    EXPECT_EQ(Show(LineFile("A7", "value")), "1\n");
    EXPECT_EQ(Store(LineFile("A7", "direction"), "sideways"), EINVAL);
    EXPECT_EQ(Show(LineFile("A7", "direction")), "out\n");
}

TEST(LineFiles, AnInputShowsWhatTheOutsidePutsOnIt) {
    SimulatedBoard board;
    Store(kGpioExport, "7");
    board.SetInput("A7", true);
    Store(LineFile("A7", "direction"), "out");
    Store(LineFile("A7", "direction"), "in");
    EXPECT_EQ(Show(LineFile("A7", "value")), "1\n");
}

TEST(LineFiles, AnOutputRefusesEdges) {
    SimulatedBoard board;
    Store(kGpioExport, "7");
    Store(LineFile("A7", "direction"), "out");
    EXPECT_EQ(Store(LineFile("A7", "edge"), "both"), EIO);
    EXPECT_EQ(Store(LineFile("A7", "edge"), "none"), 0);
    EXPECT_EQ(Store(LineFile("A7", "edge"), "up"), EINVAL);
}

TEST(LineFiles, ALineThatWatchesEdgesRefusesToBeAnOutput) {
    SimulatedBoard board;
    Store(kGpioExport, "7");
    EXPECT_EQ(Store(LineFile("A7", "edge"), "falling"), 0);
    EXPECT_EQ(Show(LineFile("A7", "edge")), "falling\n");
    EXPECT_EQ(Store(LineFile("A7", "direction"), "out"), EIO);
}

TEST(LineFiles, UnexportKeepsDirectionAndLevelAndForgetsTheEdge) {
    SimulatedBoard board;
    Store(kGpioExport, "7");
    Store(LineFile("A7", "direction"), "out");
    Store(LineFile("A7", "value"), "1");
    Store(kGpioUnexport, "7");
    EXPECT_TRUE(board.Line("A7").level);
    Store(kGpioExport, "7");
    EXPECT_EQ(Show(LineFile("A7", "direction")), "out\n");
    EXPECT_EQ(Show(LineFile("A7", "value")), "1\n");

    Store(kGpioExport, "8");
    Store(LineFile("A8", "edge"), "both");
    Store(kGpioUnexport, "8");
    Store(kGpioExport, "8");
    EXPECT_EQ(Show(LineFile("A8", "edge")), "none\n");
}

TEST(LineFiles, ADescriptorAllowsWhatItWasOpenedFor) {
    SimulatedBoard board;
    Store(kGpioExport, "7");
    EXPECT_EQ(OpenError(kGpioExport, O_RDONLY), EACCES);
    EXPECT_EQ(OpenError("/sys/class/pwm/pwmchip0/npwm", O_WRONLY), EACCES);
    std::string text;
    EXPECT_EQ(Descriptor(kGpioExport, O_WRONLY).Read(text), -EBADF);
    EXPECT_EQ(Descriptor(LineFile("A7", "value"), O_WRONLY).Read(text), -EBADF);
    EXPECT_EQ(Descriptor(LineFile("A7", "direction"), O_RDONLY).Write("out"), -EBADF);
    EXPECT_FALSE(board.Line("A7").output);
}

TEST(LineFiles, AnAttributeIsReadInPiecesAndAnewFromTheStart) {
    SimulatedBoard board;
    Store(kGpioExport, "7");
    const Descriptor file(LineFile("A7", "direction"), O_RDONLY);
    std::string piece;
    EXPECT_EQ(file.Read(piece, 2), 2);
    EXPECT_EQ(piece, "in");
    EXPECT_EQ(file.Read(piece, 2), 1);
    EXPECT_EQ(file.Read(piece, 2), 0);
    EXPECT_EQ(file.Seek(-1, SEEK_CUR), 2);
    EXPECT_EQ(file.Seek(-9, SEEK_CUR), -EINVAL);
    Store(LineFile("A7", "direction"), "out");
    EXPECT_EQ(file.ReadAgain(), "out\n");
}

TEST(LineFiles, WithoutABoardThereIsNothing) {
    sim::Scenario none;
    none.boardPresent = false;
    SimulatedBoard board(none);
    EXPECT_EQ(OpenError(kGpioExport, kAsAStreamWrites), ENOENT);
    EXPECT_EQ(OpenError("/sys/class/pwm/pwmchip0/npwm", O_RDONLY), ENOENT);
    EXPECT_EQ(OpenError(kSpiDevice, O_RDWR), ENOENT);
    EXPECT_EQ(OpenError("/dev/mem", O_RDWR), ENOENT);
}

} // namespace
} // namespace tavrelin
