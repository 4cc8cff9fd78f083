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

/// A board whose line A7 is exported.
class LineFiles : public testing::Test {
  protected:
    LineFiles() { Store(kGpioExport, "7"); }

    SimulatedBoard board;
    const std::string folder = "/sys/class/gpio/pioA7";
    const std::string direction = LineFile("A7", "direction");
    const std::string value = LineFile("A7", "value");
    const std::string edge = LineFile("A7", "edge");
};

TEST_F(LineFiles, AnExportedLineHasADirectoryBehindALink) {
    struct stat status {};
    EXPECT_NE(::stat("/sys/class/gpio/pioB18", &status), 0) << "not exported";
    ASSERT_EQ(::stat(folder.c_str(), &status), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    ASSERT_EQ(::lstat(folder.c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST_F(LineFiles, ADirectoryOpensForReadingAndCannotBeRead) {
    EXPECT_EQ(Show(folder), "EISDIR");
    EXPECT_EQ(OpenError(folder, O_WRONLY), EISDIR);
}

TEST_F(LineFiles, AMissingAttributeOfAnExportedLineIsNeverCreated) {
    EXPECT_EQ(OpenError(LineFile("A7", "active"), kAsAStreamWrites), EACCES);
    EXPECT_EQ(OpenError(LineFile("A7", "active"), O_WRONLY), ENOENT);
    EXPECT_EQ(OpenError(LineFile("A7", "active"), O_RDONLY), ENOENT);
}

TEST_F(LineFiles, ALineThatIsNotExportedHasNoAttributes) {
    EXPECT_EQ(OpenError(LineFile("B18", "value"), kAsAStreamWrites), ENOENT);
    EXPECT_EQ(OpenError(LineFile("B18", "value"), O_RDONLY), ENOENT);
}

TEST_F(LineFiles, AnAttributeThatWasTakenAwayIsRefusedAsAMissingOne) {
    board.TakeAway(edge);
    EXPECT_EQ(OpenError(edge, kAsAStreamWrites), EACCES);
    board.TakeAway(folder);
    EXPECT_EQ(OpenError(edge, kAsAStreamWrites), ENOENT);
    EXPECT_EQ(OpenError(value, O_RDONLY), ENOENT);
    EXPECT_EQ(OpenError(folder, O_RDONLY), ENOENT);
    board.Restore(folder);
    EXPECT_EQ(Show(value), "0\n");
}

TEST_F(LineFiles, ExportRefusesAnExportedLineAndNumbersThatNoLineHas) {
    EXPECT_EQ(Store(kGpioExport, "7"), EBUSY);
    for (const char* wrong : {"128", "5000", "-1", "abc", "5 1"}) {
        EXPECT_EQ(Store(kGpioExport, wrong), EINVAL) << wrong;
    }
    EXPECT_EQ(Store(kGpioExport, "99999999999999999999"), ERANGE);
    EXPECT_EQ(Store(kGpioExport, "127\n"), 0);
    EXPECT_TRUE(board.Line("D31").exported);
}

TEST_F(LineFiles, UnexportRefusesWhatIsNotExported) {
    for (const char* wrong : {"50", "128", "abc"}) {
        EXPECT_EQ(Store(kGpioUnexport, wrong), EINVAL) << wrong;
    }
}

TEST_F(LineFiles, EachWriteIsOneStore) {
    const Descriptor file(kGpioExport, O_WRONLY);
    EXPECT_EQ(file.Write("5"), 1);
    EXPECT_EQ(file.Write("1"), 1);
    EXPECT_TRUE(board.Line("A5").exported);
    EXPECT_TRUE(board.Line("A1").exported);
    EXPECT_FALSE(board.Line("B19").exported);
}

TEST_F(LineFiles, WritingNothingStoresNothing) {
    const Descriptor file(kGpioExport, O_WRONLY);
    board.Forget();
    EXPECT_EQ(file.Write(""), 0);
    EXPECT_EQ(board.Events(), Texts{});
}

TEST_F(LineFiles, OnlyAnOutputTakesAValue) {
    EXPECT_EQ(Store(value, "1"), EPERM);
    EXPECT_EQ(Store(value, "on"), EPERM);
    Store(direction, "out");
    EXPECT_EQ(Store(value, "on"), EINVAL);
    EXPECT_EQ(Store(value, "5"), 0);
    EXPECT_EQ(Show(value), "1\n");
}

TEST_F(LineFiles, DirectionOutDrivesLowAtOnce) {
    board.SetInput("A7", true);
    EXPECT_EQ(Show(value), "1\n");
    EXPECT_EQ(Store(direction, "out"), 0);
    EXPECT_EQ(Show(value), "0\n");
    EXPECT_EQ(Store(direction, "high"), 0);
    EXPECT_EQ(Show(value), "1\n");
    EXPECT_EQ(Store(direction, "sideways"), EINVAL);
    EXPECT_EQ(Show(direction), "out\n");
}

TEST_F(LineFiles, AnInputShowsWhatTheOutsidePutsOnIt) {
    board.SetInput("A7", true);
    Store(direction, "out");
    Store(direction, "in");
    EXPECT_EQ(Show(value), "1\n");
}

TEST_F(LineFiles, AnOutputRefusesEdges) {
    Store(direction, "out");
    EXPECT_EQ(Store(edge, "both"), EIO);
    EXPECT_EQ(Store(edge, "none"), 0);
    EXPECT_EQ(Store(edge, "up"), EINVAL);
}

TEST_F(LineFiles, ALineThatWatchesEdgesMayBecomeAnOutput) {
    EXPECT_EQ(Store(edge, "falling"), 0);
    EXPECT_EQ(Store(direction, "out"), 0);
    EXPECT_EQ(Show(edge), "falling\n");
}

TEST_F(LineFiles, UnexportKeepsDirectionAndLevelAndForgetsTheEdge) {
    Store(direction, "out");
    Store(value, "1");
    Store(kGpioUnexport, "7");
    EXPECT_TRUE(board.Line("A7").level);
    Store(kGpioExport, "7");
    EXPECT_EQ(Show(direction), "out\n");
    EXPECT_EQ(Show(value), "1\n");

    Store(direction, "in");
    Store(edge, "both");
    Store(kGpioUnexport, "7");
    Store(kGpioExport, "7");
    EXPECT_EQ(Show(edge), "none\n");
}

TEST_F(LineFiles, ADescriptorAllowsWhatItWasOpenedFor) {
    EXPECT_EQ(OpenError(kGpioExport, O_RDONLY), EACCES);
    EXPECT_EQ(OpenError("/sys/class/pwm/pwmchip0/npwm", O_WRONLY), EACCES);
    std::string text;
    EXPECT_EQ(Descriptor(kGpioExport, O_WRONLY).Read(text), -EBADF);
    EXPECT_EQ(Descriptor(value, O_WRONLY).Read(text), -EBADF);
    EXPECT_EQ(Descriptor(direction, O_RDONLY).Write("out"), -EBADF);
    EXPECT_FALSE(board.Line("A7").output);
}

TEST_F(LineFiles, AnAttributeIsReadInPiecesAndAnewFromTheStart) {
    const Descriptor file(direction, O_RDONLY);
    std::string piece;
    EXPECT_EQ(file.Read(piece, 2), 2);
    EXPECT_EQ(piece, "in");
    EXPECT_EQ(file.Read(piece, 2), 1);
    EXPECT_EQ(file.Read(piece, 2), 0);
    EXPECT_EQ(file.Seek(-1, SEEK_CUR), 2);
    EXPECT_EQ(file.Seek(-9, SEEK_CUR), -EINVAL);
    Store(direction, "out");
    EXPECT_EQ(file.ReadAgain(), "out\n");
}

TEST(LineFilesOfNoBoard, AreNotThereNorIsAnythingElse) {
    sim::Scenario none;
    none.board.present = false;
    const SimulatedBoard board(none);
    for (const char* path : {kGpioExport, "/sys/class/pwm/pwmchip0/npwm", kSpiDevice, "/dev/mem"}) {
        EXPECT_EQ(OpenError(path, O_RDWR), ENOENT) << path;
    }
}

} // namespace
} // namespace tavrelin
