#include "platform/AttributeFile.h"

#include "simulator/testing/SimulatedBoard.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kAttribute = "/sys/class/pwm/pwmchip0/npwm";
constexpr const char* kExport = "/sys/class/gpio/export";

std::optional<std::string> WordOf(const std::string& text) {
    SimulatedBoard board;
    board.ReplaceText(kAttribute, text);
    return ReadAttributeWord(kAttribute);
}

TEST(ReadAttributeWord, GivesTheTextWithoutItsNewline) {
    EXPECT_EQ(WordOf("4\n"), "4");
    EXPECT_EQ(WordOf("4"), "4");
}

TEST(ReadAttributeWord, GivesTheFirstOfSeveralWords) {
    EXPECT_EQ(WordOf(" \t\r\v\f\n12 34\n56"), "12");
    for (const char* whitespace : {" ", "\t", "\n", "\v", "\f", "\r"}) {
        EXPECT_EQ(WordOf(std::string("ab") + whitespace + "cd"), "ab");
    }
}

TEST(ReadAttributeWord, GivesNoWordForAnEmptyOrBlankText) {
    EXPECT_EQ(WordOf(""), "");
    EXPECT_EQ(WordOf("\n"), "");
    EXPECT_EQ(WordOf(" \t\n\v\f\r"), "");
}

TEST(ReadAttributeWord, TakesAWholePageAndNoMore) {
    EXPECT_EQ(WordOf(std::string(4096, 'x')), std::string(4096, 'x'));
    EXPECT_EQ(WordOf(std::string(5000, 'x')), std::string(4096, 'x'));
    EXPECT_EQ(WordOf(std::string(4095, ' ') + "12"), "1");
    EXPECT_EQ(WordOf(std::string(4096, ' ') + "1"), "");
}

TEST(ReadAttributeWord, KeepsBytesThatAreNoText) {
    const std::string binary("\x01\x00\xff\x80 1", 6);
    EXPECT_EQ(WordOf(binary), std::string("\x01\x00\xff\x80", 4));
    EXPECT_EQ(WordOf(std::string(1, '\0')), std::string(1, '\0'));
}

TEST(ReadAttributeWord, GivesNothingWhenTheAttributeCannotBeOpened) {
    SimulatedBoard board;
    board.TakeAway(kAttribute);
    EXPECT_EQ(ReadAttributeWord(kAttribute), std::nullopt);
    EXPECT_EQ(ReadAttributeWord(kExport), std::nullopt); // can only be written
}

TEST(ReadAttributeWord, GivesNoWordWhenTheReadFails) {
    SimulatedBoard board;
    board.Fail("read", kAttribute, EIO);
    EXPECT_EQ(ReadAttributeWord(kAttribute), "");
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(ReadAttributeWord, OpensReadsOnceAndCloses) {
    SimulatedBoard board;
    EXPECT_EQ(ReadAttributeWord(kAttribute), "4");
    EXPECT_EQ(board.Calls("open"), 1U);
    EXPECT_EQ(board.Calls("read"), 1U);
    EXPECT_EQ(board.Calls("close"), 1U);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(WriteAttribute, WritesTheBareTextInOnePiece) {
    SimulatedBoard board;
    EXPECT_TRUE(WriteAttribute(kExport, "39"));
    EXPECT_EQ(board.Events(), (Texts{"write /sys/class/gpio/export \"39\""}));
    EXPECT_EQ(board.Calls("open"), 1U);
    EXPECT_EQ(board.Calls("write"), 1U);
    EXPECT_EQ(board.Calls("close"), 1U);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(WriteAttribute, LeavesItToTheKernelWhatATextMeans) {
    const std::string longText(5000, '7');
    const std::string binary("\x00\xff\n1", 4);
    for (const std::string& text : {std::string(), longText, binary}) {
        SimulatedBoard board;
        EXPECT_TRUE(WriteAttribute(kExport, text));
        EXPECT_EQ(board.Kernel().Held(), 0U);
    }
    SimulatedBoard board;
    WriteAttribute(kExport, binary);
    EXPECT_EQ(board.WritesTo("gpio"), (Texts{"export \\x00\\xff\\n1 EINVAL"}));
}

TEST(WriteAttribute, LooksOnlyAtTheOpen) {
    SimulatedBoard board;
    board.Fail("write", kExport, EIO);
    EXPECT_TRUE(WriteAttribute(kExport, "39"));
    board.CutShort("write", kExport, 1);
    EXPECT_TRUE(WriteAttribute(kExport, "39"));
    board.Fail("close", kExport, EIO);
    EXPECT_TRUE(WriteAttribute(kExport, "40"));
    board.Fail("open", kExport, EMFILE);
    EXPECT_FALSE(WriteAttribute(kExport, "41"));
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

// A missing attribute is asked to be created, which the kernel refuses: nothing comes into being.
TEST(WriteAttribute, AsksToCreateWhatIsMissing) {
    SimulatedBoard board;
    board.Line("B7").exported = true;
    EXPECT_FALSE(WriteAttribute("/sys/class/gpio/pioB7/missing", "1"));
    EXPECT_FALSE(WriteAttribute("/sys/class/gpio/pioB8/value", "1"));
    EXPECT_FALSE(WriteAttribute("/sys/class/gpio/pioB7", "1"));
    EXPECT_EQ(board.Events(), (Texts{"open /sys/class/gpio/pioB7/missing EACCES",
                                     "open /sys/class/gpio/pioB8/value ENOENT",
                                     "open /sys/class/gpio/pioB7 EISDIR"}));
}

TEST(WriteAttribute, ReplacesWhatAFileHeld) {
    sim::Scenario scenario;
    scenario.board.card.mounted = true;
    SimulatedBoard board(scenario);
    board.WriteFileOnCard("note", "a longer text");
    EXPECT_TRUE(WriteAttribute("/mnt/sd-card/note", "short"));
    EXPECT_EQ(board.FileOnCard("note"), "short");
}

TEST(AttributeDirectory, ExistsWhileTheLineIsExported) {
    SimulatedBoard board;
    EXPECT_FALSE(AttributeDirectoryExists("/sys/class/gpio/pioB7"));
    board.Line("B7").exported = true;
    EXPECT_TRUE(AttributeDirectoryExists("/sys/class/gpio/pioB7"));
    board.Fail("access", "/sys/class/gpio/pioB7", EACCES);
    EXPECT_FALSE(AttributeDirectoryExists("/sys/class/gpio/pioB7"));
    EXPECT_EQ(board.Calls("access"), 3U);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

} // namespace
} // namespace tavrelin
