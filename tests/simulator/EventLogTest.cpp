// The event log's lines, as documented: people and tests read them.

#include "tests/simulator/RawCalls.h"

#include "simulator/testing/SimulatedBoard.h"

#include "tests/support/TestFolder.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>

namespace tavrelin {
namespace {

using sim::EventLog;
using sim::Microseconds;
using sim::SimulatedBoard;

TEST(EventLine, HoldsTimeThreadOperationPathAndData) {
    EXPECT_EQ(EventLog::Line({sim::Milliseconds(1500) + 999, 3, "write", "/sys/a", "\"1\""}),
              "1500000 3 write /sys/a \"1\"\n");
}

TEST(EventLine, KeepsAPathOneWord) {
    EXPECT_EQ(EventLog::Line({0, 1, "open", "/mnt/sd-card/a b", "ok"}),
              "0 1 open \"/mnt/sd-card/a b\" ok\n");
    EXPECT_EQ(EventLog::Line({0, 1, "open", "/mnt/sd-card/a\nb", "ok"}),
              "0 1 open \"/mnt/sd-card/a\\nb\" ok\n");
}

TEST(EventLine, QuotesTexts) {
    EXPECT_EQ(EventLog::Quoted("plain"), "\"plain\"");
    EXPECT_EQ(EventLog::Quoted(""), "\"\"");
    EXPECT_EQ(EventLog::Quoted("a\nb\tc"), "\"a\\nb\\tc\"");
    EXPECT_EQ(EventLog::Quoted("say \"\\\""), "\"say \\\"\\\\\\\"\"");
    EXPECT_EQ(EventLog::Quoted(std::string("\0\x1b\xff\x7f", 4)), "\"\\x00\\x1b\\xff\\x7f\"");
}

/// A log into a file, told by hand.
class EventFile : public testing::Test {
  protected:
    EventFile() {
        log = std::make_unique<EventLog>();
        log->now = [this] { return now; };
        log->thread = [this] { return thread; };
        EXPECT_TRUE(log->WriteTo(folder.Path("events"), buffer));
    }
    void ReadAt(int us, const std::string& data, const std::string& path = "/a") {
        now = Microseconds(us);
        log->Add("read", path, data);
    }
    std::string Text() {
        log.reset();
        return TextOf(folder.Path("events"));
    }

    TestFolder folder;
    sim::FileBuffer buffer;
    std::unique_ptr<EventLog> log;
    sim::Nanoseconds now = 0;
    unsigned thread = 1;
};

TEST_F(EventFile, WritesEqualReadsOnceAndThenHowOftenTheyCameAgain) {
    ReadAt(1, "\"0\"");
    ReadAt(2, "\"0\"");
    ReadAt(5, "\"0\"");
    ReadAt(9, "\"1\"");
    ReadAt(10, "\"1\"");
    EXPECT_EQ(Text(), "1 1 read /a \"0\"\n"
                      "5 1 read /a \"0\" again 2 times\n"
                      "9 1 read /a \"1\"\n"
                      "10 1 read /a \"1\" again 1 time\n");
}

TEST_F(EventFile, ARepeatHasTheSameThreadAndPath) {
    ReadAt(1, "\"0\"");
    ReadAt(2, "\"0\"", "/b");
    thread = 2;
    ReadAt(3, "\"0\"", "/b");
    log->Add("write", "/b", "\"0\"");
    log->Add("write", "/b", "\"0\"");
    EXPECT_EQ(Text(), "1 1 read /a \"0\"\n"
                      "2 1 read /b \"0\"\n"
                      "3 2 read /b \"0\"\n"
                      "3 2 write /b \"0\"\n"
                      "3 2 write /b \"0\"\n");
}

TEST_F(EventFile, TellsTheWorldAsThreadZero) {
    log->AddWorld("card", "-", "removed");
    EXPECT_EQ(Text(), "0 0 card - removed\n");
}

TEST_F(EventFile, LosesNothingHoweverMuchComes) {
    std::string expected;
    const std::string longText(200'000, 'x');
    for (int i = 0; i < 5000; ++i) {
        now = Microseconds(i);
        log->Add("write", "/a", std::to_string(i));
        expected += std::to_string(i) + " 1 write /a " + std::to_string(i) + "\n";
    }
    log->Add("write", "/a", longText);
    EXPECT_EQ(Text(), expected + "4999 1 write /a " + longText + "\n");
}

TEST_F(EventFile, WhatIsNotWrittenYetLiesInTheBuffer) {
    log->Add("write", "/a", "first");
    EXPECT_EQ(std::string(buffer.text.data(), buffer.used), "0 1 write /a first\n");
    EXPECT_EQ(buffer.offset, 0U);
    log->Flush();
    EXPECT_EQ(buffer.used, 0U);
    EXPECT_EQ(buffer.offset, 19U);
}

TEST_F(EventFile, EndsWithAWholeLineWhereTheDiskIsFull) {
    const std::string line(100, 'x');
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{sim::FileBuffer::kSize + 10'000, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    for (int i = 0; i < 2000; ++i) {
        log->Add("write", "/a", line);
    }
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    const std::string text = Text();
    EXPECT_EQ(buffer.error, EFBIG);
    EXPECT_EQ(text.size(), buffer.offset);
    EXPECT_GT(text.size(), sim::FileBuffer::kSize - 200);
    EXPECT_EQ(text.substr(text.size() - 3), "xx\n");
}

TEST_F(EventFile, AForkedProcessWritesNoMore) {
    log->Add("write", "/a", "first");
    log->Flush();
    log->Abandon();
    log->Add("write", "/a", "second");
    EXPECT_EQ(Text(), "0 1 write /a first\n");
}

TEST(EventFileOfNowhere, IsRefused) {
    EventLog log;
    sim::FileBuffer buffer;
    EXPECT_FALSE(log.WriteTo("/nowhere/events", buffer));
    EXPECT_FALSE(log.Active());
}

TEST(Events, TellWhatAProgramDoes) {
    SimulatedBoard board;
    Store(kGpioExport, "7");
    Show(LineFile("A7", "value"));
    ::mount("/dev/mmcblk0p1", "/mnt/sd-card", "vfat", MS_SYNCHRONOUS, "");
    Store("/mnt/sd-card/log.csv", "a,b\n");
    OpenError(LineFile("A8", "value"), O_RDONLY);
    EXPECT_EQ(
        board.TimedEvents(),
        (sim::Texts{"0 1 write /sys/class/gpio/export \"7\"",
                    "0 1 read /sys/class/gpio/pioA7/value \"0\\n\"",
                    "0 1 mount /mnt/sd-card /dev/mmcblk0p1 vfat 16 \"\" ok",
                    "0 1 open /mnt/sd-card/log.csv ok", "0 1 write /mnt/sd-card/log.csv \"a,b\\n\"",
                    "0 1 close /mnt/sd-card/log.csv ok",
                    "0 1 open /sys/class/gpio/pioA8/value ENOENT"}));
}

} // namespace
} // namespace tavrelin
