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

constexpr int asAStreamWrites = O_WRONLY | O_CREAT | O_TRUNC;

TEST(LineFiles, AnExportedLineHasADirectoryBehindALink) {
    SimulatedBoard board;
    struct stat status {};
    EXPECT_NE(::stat("/sys/class/gpio/pioB18", &status), 0);
    ASSERT_EQ(store(gpioExport, "50"), 0);
    ASSERT_EQ(::stat("/sys/class/gpio/pioB18", &status), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    ASSERT_EQ(::lstat("/sys/class/gpio/pioB18", &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST(LineFiles, ADirectoryOpensForReadingAndCannotBeRead) {
    SimulatedBoard board;
    store(gpioExport, "50");
    EXPECT_EQ(show("/sys/class/gpio/pioB18"), "EISDIR");
    EXPECT_EQ(openError("/sys/class/gpio/pioB18", O_WRONLY), EISDIR);
}

TEST(LineFiles, AMissingAttributeOfAnExportedLineIsNeverCreated) {
    SimulatedBoard board;
    store(gpioExport, "50");
    EXPECT_EQ(openError(lineFile("B18", "active"), asAStreamWrites), EACCES);
    EXPECT_EQ(openError(lineFile("B18", "active"), O_WRONLY), ENOENT);
    EXPECT_EQ(openError(lineFile("B18", "active"), O_RDONLY), ENOENT);
}

TEST(LineFiles, ALineThatIsNotExportedHasNoAttributes) {
    SimulatedBoard board;
    EXPECT_EQ(openError(lineFile("B18", "value"), asAStreamWrites), ENOENT);
    EXPECT_EQ(openError(lineFile("B18", "value"), O_RDONLY), ENOENT);
}

TEST(LineFiles, AnAttributeThatWasTakenAwayIsRefusedAsAMissingOne) {
    SimulatedBoard board;
    store(gpioExport, "50");
    board.takeAway(lineFile("B18", "edge"));
    EXPECT_EQ(openError(lineFile("B18", "edge"), asAStreamWrites), EACCES);
    board.takeAway("/sys/class/gpio/pioB18");
    EXPECT_EQ(openError(lineFile("B18", "edge"), asAStreamWrites), ENOENT);
    EXPECT_EQ(openError(lineFile("B18", "value"), O_RDONLY), ENOENT);
    EXPECT_EQ(openError("/sys/class/gpio/pioB18", O_RDONLY), ENOENT);
    board.restore("/sys/class/gpio/pioB18");
    EXPECT_EQ(show(lineFile("B18", "value")), "1\n");
}

TEST(LineFiles, ExportRefusesAnExportedLineAndNumbersThatNoLineHas) {
    SimulatedBoard board;
    EXPECT_EQ(store(gpioExport, "50"), 0);
    EXPECT_EQ(store(gpioExport, "50"), EBUSY);
    for (const char* wrong : {"128", "5000", "-1", "abc", "5 1", "99999999999999999999"}) {
        EXPECT_EQ(store(gpioExport, wrong), EINVAL) << wrong;
    }
    EXPECT_EQ(store(gpioExport, "127\n"), 0);
    EXPECT_TRUE(board.line("D31").exported);
}

TEST(LineFiles, UnexportRefusesWhatIsNotExported) {
    SimulatedBoard board;
    for (const char* wrong : {"50", "128", "abc"}) {
        EXPECT_EQ(store(gpioUnexport, wrong), EINVAL) << wrong;
    }
}

TEST(LineFiles, EachWriteIsOneStore) {
    SimulatedBoard board;
    const Descriptor file(gpioExport, O_WRONLY);
    EXPECT_EQ(file.write("5"), 1);
    EXPECT_EQ(file.write("1"), 1);
    EXPECT_TRUE(board.line("A5").exported);
    EXPECT_TRUE(board.line("A1").exported);
    EXPECT_FALSE(board.line("B19").exported);
}

TEST(LineFiles, WritingNothingStoresNothing) {
    SimulatedBoard board;
    const Descriptor file(gpioExport, O_WRONLY);
    EXPECT_EQ(file.write(""), 0);
    EXPECT_EQ(board.writesTo("gpio"), Texts{});
}

TEST(LineFiles, OnlyAnOutputTakesAValue) {
    SimulatedBoard board;
    store(gpioExport, "7");
    EXPECT_EQ(store(lineFile("A7", "value"), "1"), EPERM);
    EXPECT_EQ(store(lineFile("A7", "value"), "on"), EPERM);
    store(lineFile("A7", "direction"), "out");
    EXPECT_EQ(store(lineFile("A7", "value"), "on"), EINVAL);
    EXPECT_EQ(store(lineFile("A7", "value"), "5"), 0);
    EXPECT_EQ(show(lineFile("A7", "value")), "1\n");
}

TEST(LineFiles, DirectionOutDrivesLowAtOnce) {
    SimulatedBoard board;
    store(gpioExport, "7");
    board.setInput("A7", true);
    EXPECT_EQ(show(lineFile("A7", "value")), "1\n");
    EXPECT_EQ(store(lineFile("A7", "direction"), "out"), 0);
    EXPECT_EQ(show(lineFile("A7", "value")), "0\n");
    EXPECT_EQ(store(lineFile("A7", "direction"), "high"), 0);
    EXPECT_EQ(show(lineFile("A7", "value")), "1\n");
    EXPECT_EQ(store(lineFile("A7", "direction"), "sideways"), EINVAL);
    EXPECT_EQ(show(lineFile("A7", "direction")), "out\n");
}

TEST(LineFiles, AnInputShowsWhatTheOutsidePutsOnIt) {
    SimulatedBoard board;
    store(gpioExport, "7");
    board.setInput("A7", true);
    store(lineFile("A7", "direction"), "out");
    store(lineFile("A7", "direction"), "in");
    EXPECT_EQ(show(lineFile("A7", "value")), "1\n");
}

TEST(LineFiles, AnOutputRefusesEdges) {
    SimulatedBoard board;
    store(gpioExport, "7");
    store(lineFile("A7", "direction"), "out");
    EXPECT_EQ(store(lineFile("A7", "edge"), "both"), EIO);
    EXPECT_EQ(store(lineFile("A7", "edge"), "none"), 0);
    EXPECT_EQ(store(lineFile("A7", "edge"), "up"), EINVAL);
}

TEST(LineFiles, ALineThatWatchesEdgesRefusesToBeAnOutput) {
    SimulatedBoard board;
    store(gpioExport, "7");
    EXPECT_EQ(store(lineFile("A7", "edge"), "falling"), 0);
    EXPECT_EQ(show(lineFile("A7", "edge")), "falling\n");
    EXPECT_EQ(store(lineFile("A7", "direction"), "out"), EIO);
}

TEST(LineFiles, UnexportKeepsDirectionAndLevelAndForgetsTheEdge) {
    SimulatedBoard board;
    store(gpioExport, "7");
    store(lineFile("A7", "direction"), "out");
    store(lineFile("A7", "value"), "1");
    store(gpioUnexport, "7");
    EXPECT_TRUE(board.line("A7").level);
    store(gpioExport, "7");
    EXPECT_EQ(show(lineFile("A7", "direction")), "out\n");
    EXPECT_EQ(show(lineFile("A7", "value")), "1\n");

    store(gpioExport, "8");
    store(lineFile("A8", "edge"), "both");
    store(gpioUnexport, "8");
    store(gpioExport, "8");
    EXPECT_EQ(show(lineFile("A8", "edge")), "none\n");
}

TEST(LineFiles, ADescriptorAllowsWhatItWasOpenedFor) {
    SimulatedBoard board;
    store(gpioExport, "7");
    EXPECT_EQ(openError(gpioExport, O_RDONLY), EACCES);
    EXPECT_EQ(openError("/sys/class/pwm/pwmchip0/npwm", O_WRONLY), EACCES);
    std::string text;
    EXPECT_EQ(Descriptor(gpioExport, O_WRONLY).read(text), -EBADF);
    EXPECT_EQ(Descriptor(lineFile("A7", "value"), O_WRONLY).read(text), -EBADF);
    EXPECT_EQ(Descriptor(lineFile("A7", "direction"), O_RDONLY).write("out"), -EBADF);
    EXPECT_FALSE(board.line("A7").output);
}

TEST(LineFiles, AnAttributeIsReadInPiecesAndAnewFromTheStart) {
    SimulatedBoard board;
    store(gpioExport, "7");
    const Descriptor file(lineFile("A7", "direction"), O_RDONLY);
    std::string piece;
    EXPECT_EQ(file.read(piece, 2), 2);
    EXPECT_EQ(piece, "in");
    EXPECT_EQ(file.read(piece, 2), 1);
    EXPECT_EQ(file.read(piece, 2), 0);
    EXPECT_EQ(file.seek(-1, SEEK_CUR), 2);
    EXPECT_EQ(file.seek(-9, SEEK_CUR), -EINVAL);
    store(lineFile("A7", "direction"), "out");
    EXPECT_EQ(file.readAgain(), "out\n");
}

TEST(LineFiles, WithoutABoardThereIsNothing) {
    sim::Scenario none;
    none.boardPresent = false;
    SimulatedBoard board(none);
    EXPECT_EQ(openError(gpioExport, asAStreamWrites), ENOENT);
    EXPECT_EQ(openError("/sys/class/pwm/pwmchip0/npwm", O_RDONLY), ENOENT);
    EXPECT_EQ(openError(spiDevice, O_RDWR), ENOENT);
    EXPECT_EQ(openError("/dev/mem", O_RDWR), ENOENT);
}

} // namespace
} // namespace tavrelin
