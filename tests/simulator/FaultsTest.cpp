// Calls that are made to fail: which, when, and what comes of it.

#include "tests/simulator/RawCalls.h"

#include "simulator/testing/SimulatedBoard.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrelin {
namespace {

using sim::Fault;
using sim::Faults;
using sim::SimulatedBoard;

/// Which of ten calls on a path fail: "..x......." for the third.
std::string Pattern(const Fault& fault, std::string_view call = "open",
                    std::string_view path = "/sys/class/gpio/export") {
    Faults faults({fault});
    std::string text;
    for (int i = 0; i < 10; ++i) {
        text += faults.Meet(call, path, 0) ? 'x' : '.';
    }
    return text;
}

Fault FaultOn(const std::string& call, const std::string& path, std::uint64_t occurrence = 1,
              bool forever = false) {
    return {call, path, occurrence, EIO, std::nullopt, forever};
}

TEST(Faults, StrikeAtTheirOccurrence) {
    EXPECT_EQ(Pattern(FaultOn("open", "/sys/class/gpio/export")), "x.........");
    EXPECT_EQ(Pattern(FaultOn("open", "/sys/class/gpio/export", 3)), "..x.......");
    EXPECT_EQ(Pattern(FaultOn("open", "/sys/class/gpio/export", 3, true)), "..xxxxxxxx");
    EXPECT_EQ(Pattern(FaultOn("open", "/sys/class/gpio/export", 11, true)), "..........");
}

TEST(Faults, MeetTheirCallAndPathOnly) {
    EXPECT_EQ(Pattern(FaultOn("write", "/sys/class/gpio/export")), "..........");
    EXPECT_EQ(Pattern(FaultOn("open", "/sys/class/gpio/unexport")), "..........");
    EXPECT_EQ(Pattern(FaultOn("open", "/sys/class/gpio/exp")), "..........");
    EXPECT_EQ(Pattern(FaultOn("open", "/sys/class/gpio/exp*")), "x.........");
    EXPECT_EQ(Pattern(FaultOn("open", "/sys/class/gpio/export*")), "x.........");
    EXPECT_EQ(Pattern(FaultOn("open", "/sys/class/pwm/*")), "..........");
    EXPECT_EQ(Pattern(FaultOn("open", "")), "x.........") << "any path";
}

TEST(Faults, CountFromTheirMomentOn) {
    Fault late = FaultOn("open", "/a", 2);
    late.at = 5'000;
    Faults faults({late});
    EXPECT_FALSE(faults.Meet("open", "/a", 4'999));
    EXPECT_FALSE(faults.Meet("open", "/a", 5'000)) << "the first that counts";
    EXPECT_EQ(faults.Armed().front().struck, 0U);
    EXPECT_TRUE(faults.Meet("open", "/a", 5'000));
    EXPECT_EQ(faults.Armed().front().struck, 1U);
}

TEST(Faults, AreOverAtTheirEnd) {
    Fault passing = FaultOn("open", "/a", 1, true);
    passing.until = 5'000;
    Faults faults({passing});
    EXPECT_TRUE(faults.Meet("open", "/a", 4'999));
    EXPECT_FALSE(faults.Meet("open", "/a", 5'000));
    EXPECT_EQ(faults.Armed().front().met, 1U);
}

TEST(Faults, CountOneByOne) {
    Faults faults({FaultOn("open", "/a", 1), FaultOn("open", "/b", 2), FaultOn("open", "", 4)});
    EXPECT_TRUE(faults.Meet("open", "/a", 0));
    EXPECT_FALSE(faults.Meet("open", "/b", 0));
    EXPECT_TRUE(faults.Meet("open", "/b", 0));
    EXPECT_TRUE(faults.Meet("open", "/c", 0)) << "the fourth of any path";
    EXPECT_FALSE(faults.Meet("open", "/a", 0));
}

TEST(Faults, TheFirstOfTwoDecides) {
    Faults faults({{"read", "", 1, EIO, std::nullopt, false},
                   {"read", "", 1, 0, 2, false},
                   {"read", "", 2, 0, 2, false}});
    EXPECT_EQ(faults.Meet("read", "/a", 0)->error, EIO);
    const auto second = faults.Meet("read", "/a", 0);
    EXPECT_EQ(second->error, 0);
    EXPECT_EQ(second->bytes, 2U);
}

/// The same of a fault with a probability, drawn from a seed.
std::string Drawn(std::uint64_t seed, bool forever, std::uint64_t occurrence = 1) {
    Fault fault = FaultOn("open", "/a", occurrence, forever);
    fault.probability = 0.5;
    Faults faults({fault});
    faults.Draw(seed);
    std::string text;
    for (int i = 0; i < 40; ++i) {
        text += faults.Meet("open", "/a", 0) != nullptr ? 'x' : '.';
    }
    return text;
}

TEST(Faults, StrikeWithAProbabilityThatTheSeedDraws) {
    const std::string drawn = Drawn(7, true);
    EXPECT_NEAR(static_cast<double>(std::count(drawn.begin(), drawn.end(), 'x')), 20.0, 10.0);
    EXPECT_EQ(Drawn(7, true), drawn);
    EXPECT_NE(Drawn(8, true), drawn);
    const std::string once = Drawn(7, false);
    EXPECT_EQ(std::count(once.begin(), once.end(), 'x'), 1) << "the first that is drawn";
    EXPECT_EQ(once.find('x'), drawn.find('x'));
    EXPECT_EQ(Drawn(7, true, 30).substr(0, 29), std::string(29, '.'));
}

TEST(FailingCalls, FailWithTheirErrnoAndDoNothing) {
    SimulatedBoard board;
    board.Fail("open", kGpioExport, EMFILE);
    board.Fail("write", kGpioExport, EIO);
    EXPECT_EQ(Store(kGpioExport, "7"), EMFILE);
    EXPECT_EQ(Store(kGpioExport, "7"), EIO);
    EXPECT_FALSE(board.Line("A7").exported);
    EXPECT_EQ(board.Events(), (sim::Texts{"open /sys/class/gpio/export EMFILE",
                                          "write /sys/class/gpio/export EIO"}));
    EXPECT_EQ(Store(kGpioExport, "7"), 0);
}

TEST(FailingCalls, CloseFailsAndClosesAllTheSame) {
    SimulatedBoard board;
    board.Fail("close", kGpioExport, EIO);
    Descriptor file(kGpioExport, O_WRONLY);
    EXPECT_EQ(file.Close(), -EIO);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(FailingCalls, AreCountedLikeAllOthers) {
    SimulatedBoard board;
    board.Fail("open", kGpioExport, EMFILE);
    Store(kGpioExport, "7");
    Store(kGpioExport, "7");
    EXPECT_EQ(board.Calls("open"), 2U);
    EXPECT_EQ(board.Calls("write"), 1U);
    EXPECT_EQ(board.Calls("ioctl"), 0U);
}

TEST(ShortMoves, CutAReadOrWrite) {
    SimulatedBoard board;
    ::mount("/dev/mmcblk0p1", "/mnt/sd-card", "vfat", 0, "");
    board.CutShort("write", "/mnt/sd-card/log.csv", 3);
    const Descriptor file("/mnt/sd-card/log.csv", O_RDWR | O_CREAT);
    EXPECT_EQ(file.Write("abcdef"), 3);
    EXPECT_EQ(file.Write("def"), 3);
    EXPECT_EQ(board.FileOnCard("log.csv"), "abcdef");

    board.CutShort("read", kSpiDevice, 1);
    const Descriptor converter(kSpiDevice, O_RDWR);
    std::string bytes;
    EXPECT_EQ(converter.Read(bytes, 4), 1);
    EXPECT_EQ(converter.Read(bytes, 4), 4);
}

TEST(FailingCalls, IncludeThoseOnPaths) {
    SimulatedBoard board;
    struct stat status {};
    const char* path = "/mnt/sd-card";
    const std::pair<const char*, std::function<int()>> calls[]{
        {"access", [&] { return ::access(path, F_OK); }},
        {"stat", [&] { return ::stat(path, &status); }},
        {"lstat", [&] { return ::lstat(path, &status); }},
        {"mkdir", [&] { return ::mkdir(path, 0700); }},
        {"mount", [&] { return ::mount("/dev/mmcblk0p1", path, "vfat", 0, ""); }},
        {"umount", [&] { return ::umount(path); }}};
    int error = ENOLCK; // a different one for each call
    for (const auto& [name, call] : calls) {
        board.Fail(name, path, ++error);
        EXPECT_EQ(call(), -1) << name;
        EXPECT_EQ(errno, error) << name;
    }
}

} // namespace
} // namespace tavrelin
