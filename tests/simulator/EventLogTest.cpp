// The event log's lines, as documented: people and tests read them.

#include "tests/simulator/RawCalls.h"

#include "simulator/testing/SimulatedBoard.h"

#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>

namespace tavrelin {
namespace {

using sim::Event;
using sim::EventLog;
using sim::microseconds;
using sim::SimulatedBoard;

TEST(EventLine, HoldsTimeThreadOperationPathAndData) {
    EXPECT_EQ(EventLog::line({sim::milliseconds(1500) + 999, 3, "write", "/sys/a", "\"1\""}),
              "1500000 3 write /sys/a \"1\"\n");
}

TEST(EventLine, KeepsAPathOneWord) {
    EXPECT_EQ(EventLog::line({0, 1, "open", "/mnt/sd-card/a b", "ok"}),
              "0 1 open \"/mnt/sd-card/a b\" ok\n");
    EXPECT_EQ(EventLog::line({0, 1, "open", "/mnt/sd-card/a\nb", "ok"}),
              "0 1 open \"/mnt/sd-card/a\\nb\" ok\n");
}

TEST(EventLine, QuotesTexts) {
    EXPECT_EQ(EventLog::quoted("plain"), "\"plain\"");
    EXPECT_EQ(EventLog::quoted(""), "\"\"");
    EXPECT_EQ(EventLog::quoted("a\nb\tc"), "\"a\\nb\\tc\"");
    EXPECT_EQ(EventLog::quoted("say \"\\\""), "\"say \\\"\\\\\\\"\"");
    EXPECT_EQ(EventLog::quoted(std::string("\0\x1b\xff\x7f", 4)), "\"\\x00\\x1b\\xff\\x7f\"");
}

/// A log into a file, told by hand.
class EventFile : public testing::Test {
  protected:
    EventFile() {
        log = std::make_unique<EventLog>();
        log->now = [this] { return now; };
        log->thread = [this] { return thread; };
        EXPECT_TRUE(log->writeTo(folder.File("events"), buffer));
    }
    void readAt(int us, const std::string& data, const std::string& path = "/a") {
        now = microseconds(us);
        log->add("read", path, data);
    }
    std::string text() {
        log.reset();
        return TextOf(folder.File("events"));
    }

    TemporaryFolder folder;
    sim::EventBuffer buffer;
    std::unique_ptr<EventLog> log;
    sim::Nanoseconds now = 0;
    unsigned thread = 1;
};

TEST_F(EventFile, WritesEqualReadsOnceAndThenHowOftenTheyCameAgain) {
    readAt(1, "\"0\"");
    readAt(2, "\"0\"");
    readAt(5, "\"0\"");
    readAt(9, "\"1\"");
    readAt(10, "\"1\"");
    EXPECT_EQ(text(), "1 1 read /a \"0\"\n"
                      "5 1 read /a \"0\" again 2 times\n"
                      "9 1 read /a \"1\"\n"
                      "10 1 read /a \"1\" again 1 time\n");
}

TEST_F(EventFile, ARepeatHasTheSameThreadAndPath) {
    readAt(1, "\"0\"");
    readAt(2, "\"0\"", "/b");
    thread = 2;
    readAt(3, "\"0\"", "/b");
    log->add("write", "/b", "\"0\"");
    log->add("write", "/b", "\"0\"");
    EXPECT_EQ(text(), "1 1 read /a \"0\"\n"
                      "2 1 read /b \"0\"\n"
                      "3 2 read /b \"0\"\n"
                      "3 2 write /b \"0\"\n"
                      "3 2 write /b \"0\"\n");
}

TEST_F(EventFile, TellsTheWorldAsThreadZero) {
    log->addWorld("card", "-", "removed");
    EXPECT_EQ(text(), "0 0 card - removed\n");
}

TEST_F(EventFile, LosesNothingHoweverMuchComes) {
    std::string expected;
    const std::string longText(200'000, 'x');
    for (int i = 0; i < 5000; ++i) {
        now = microseconds(i);
        log->add("write", "/a", std::to_string(i));
        expected += std::to_string(i) + " 1 write /a " + std::to_string(i) + "\n";
    }
    log->add("write", "/a", longText);
    EXPECT_EQ(text(), expected + "4999 1 write /a " + longText + "\n");
}

TEST_F(EventFile, WhatIsNotWrittenYetLiesInTheBuffer) {
    log->add("write", "/a", "first");
    EXPECT_EQ(std::string(buffer.text.data(), buffer.used), "0 1 write /a first\n");
    EXPECT_EQ(buffer.offset, 0U);
    log->flush();
    EXPECT_EQ(buffer.used, 0U);
    EXPECT_EQ(buffer.offset, 19U);
}

TEST_F(EventFile, AForkedProcessWritesNoMore) {
    log->add("write", "/a", "first");
    log->flush();
    log->abandon();
    log->add("write", "/a", "second");
    EXPECT_EQ(text(), "0 1 write /a first\n");
}

TEST(EventFileOfNowhere, IsRefused) {
    EventLog log;
    sim::EventBuffer buffer;
    EXPECT_FALSE(log.writeTo("/nowhere/events", buffer));
    EXPECT_FALSE(log.active());
}

TEST(Events, TellWhatAProgramDoes) {
    SimulatedBoard board;
    store(gpioExport, "7");
    show(lineFile("A7", "value"));
    ::mount("/dev/mmcblk0p1", "/mnt/sd-card", "vfat", MS_SYNCHRONOUS, "");
    store("/mnt/sd-card/log.csv", "a,b\n");
    openError(lineFile("A8", "value"), O_RDONLY);
    EXPECT_EQ(
        board.timedEvents(),
        (sim::Texts{"0 1 write /sys/class/gpio/export \"7\"",
                    "0 1 read /sys/class/gpio/pioA7/value \"0\\n\"",
                    "0 1 mount /mnt/sd-card /dev/mmcblk0p1 vfat 16 \"\" ok",
                    "0 1 open /mnt/sd-card/log.csv ok", "0 1 write /mnt/sd-card/log.csv \"a,b\\n\"",
                    "0 1 close /mnt/sd-card/log.csv ok",
                    "0 1 open /sys/class/gpio/pioA8/value ENOENT"}));
}

} // namespace
} // namespace tavrelin
