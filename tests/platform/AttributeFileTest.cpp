#include "platform/AttributeFile.h"

#include "tests/support/BoardTest.h"
#include "tests/support/ClosedStandardInput.h"
#include "tests/support/TestFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrelin {
namespace {

using sim::Texts;

constexpr const char* kAttribute = "/sys/class/pwm/pwmchip0/npwm";
constexpr const char* kExport = "/sys/class/gpio/export";

// Nothing is held open afterwards, whatever happens.
class AttributeFile : public BoardTest {
  protected:
    void TearDown() override { EXPECT_EQ(board.Kernel().Held(), 0U); }

    std::optional<std::string> WordOf(const std::string& text) {
        board.ReplaceText(kAttribute, text);
        return ReadAttributeWord(kAttribute);
    }
};

TEST_F(AttributeFile, GivesItsTextWithoutTheNewline) {
    EXPECT_EQ(WordOf("4\n"), "4");
    EXPECT_EQ(WordOf("4"), "4");
}

TEST_F(AttributeFile, GivesTheFirstOfSeveralWords) {
    EXPECT_EQ(WordOf(" \t\r\v\f\n12 34\n56"), "12");
    for (const char* whitespace : {" ", "\t", "\n", "\v", "\f", "\r"}) {
        EXPECT_EQ(WordOf(std::string("ab") + whitespace + "cd"), "ab");
    }
}

TEST_F(AttributeFile, GivesNoWordWhenEmptyOrBlankOrNotToBeRead) {
    EXPECT_EQ(WordOf(""), "");
    EXPECT_EQ(WordOf(" \t\n\v\f\r"), "");
    board.Fail("read", kAttribute, EIO);
    EXPECT_EQ(WordOf("4"), "");
}

TEST_F(AttributeFile, GivesAWholePageAndNoMore) {
    EXPECT_EQ(WordOf(std::string(4096, 'x')), std::string(4096, 'x'));
    EXPECT_EQ(WordOf(std::string(5000, 'x')), std::string(4096, 'x'));
    EXPECT_EQ(WordOf(std::string(4095, ' ') + "12"), "1");
    EXPECT_EQ(WordOf(std::string(4096, ' ') + "1"), "");
}

TEST_F(AttributeFile, KeepsBytesThatAreNoText) {
    EXPECT_EQ(WordOf(std::string("\x01\x00\xff\x80 1", 6)), std::string("\x01\x00\xff\x80", 4));
    EXPECT_EQ(WordOf(std::string(1, '\0')), std::string(1, '\0'));
}

TEST_F(AttributeFile, GivesNothingWhenItCannotBeOpened) {
    board.TakeAway(kAttribute);
    EXPECT_EQ(ReadAttributeWord(kAttribute), std::nullopt);
    EXPECT_EQ(ReadAttributeWord(kExport), std::nullopt); // can only be written
}

TEST_F(AttributeFile, IsOpenedReadOnceAndClosed) {
    EXPECT_EQ(ReadAttributeWord(kAttribute), "4");
    EXPECT_EQ(board.Calls("open"), 1U);
    EXPECT_EQ(board.Calls("read"), 1U);
    EXPECT_EQ(board.Calls("close"), 1U);
}

TEST_F(AttributeFile, IsWrittenInOnePieceAndClosed) {
    EXPECT_TRUE(WriteAttribute(kExport, "39"));
    EXPECT_EQ(board.Events(), (Texts{"write /sys/class/gpio/export \"39\""}));
    EXPECT_EQ(board.Calls("open"), 1U);
    EXPECT_EQ(board.Calls("write"), 1U);
    EXPECT_EQ(board.Calls("close"), 1U);
}

TEST_F(AttributeFile, LeavesItToTheKernelWhatATextMeans) {
    EXPECT_TRUE(WriteAttribute(kExport, std::string()));
    EXPECT_TRUE(WriteAttribute(kExport, std::string(5000, '7')));
    board.Forget();
    EXPECT_TRUE(WriteAttribute(kExport, std::string("\x00\xff\n1", 4)));
    EXPECT_EQ(board.WritesTo("gpio"), (Texts{"export \\x00\\xff\\n1 EINVAL"}));
}

TEST_F(AttributeFile, IsWrittenWhenItCouldBeOpenedWhateverCameOfTheRest) {
    board.Fail("write", kExport, EIO);
    EXPECT_TRUE(WriteAttribute(kExport, "39"));
    board.CutShort("write", kExport, 1);
    EXPECT_TRUE(WriteAttribute(kExport, "39"));
    board.Fail("close", kExport, EIO);
    EXPECT_TRUE(WriteAttribute(kExport, "40"));
    board.Fail("open", kExport, EMFILE);
    EXPECT_FALSE(WriteAttribute(kExport, "41"));
}

// A missing attribute is asked to be created, which the kernel refuses: nothing comes into being.
TEST_F(AttributeFile, IsAskedToBeCreatedWhereItIsMissing) {
    board.Line("B7").exported = true;
    EXPECT_FALSE(WriteAttribute("/sys/class/gpio/pioB7/missing", "1"));
    EXPECT_FALSE(WriteAttribute("/sys/class/gpio/pioB8/value", "1"));
    EXPECT_FALSE(WriteAttribute("/sys/class/gpio/pioB7", "1"));
    EXPECT_EQ(board.Events(), (Texts{"open /sys/class/gpio/pioB7/missing EACCES",
                                     "open /sys/class/gpio/pioB8/value ENOENT",
                                     "open /sys/class/gpio/pioB7 EISDIR"}));
}

TEST(AttributeFileOnACard, ReplacesWhatItHeld) {
    sim::Scenario scenario;
    scenario.board.card.mounted = true;
    const sim::SimulatedBoard board(scenario);
    board.WriteFileOnCard("note", "a longer text");
    EXPECT_TRUE(WriteAttribute("/mnt/sd-card/note", "short"));
    EXPECT_EQ(board.FileOnCard("note"), "short");
}

TEST_F(AttributeFile, HasADirectoryWhileItsLineIsExported) {
    EXPECT_FALSE(AttributeDirectoryExists("/sys/class/gpio/pioB7"));
    board.Line("B7").exported = true;
    EXPECT_TRUE(AttributeDirectoryExists("/sys/class/gpio/pioB7"));
    EXPECT_EQ(board.Calls("access"), 2U);
}

// 0 when a folder that may be listed exists and one that may not does not, asked as an ordinary
// user: root may list everything.
[[noreturn]] void LookAtFolders(const std::string& open, const std::string& closed) {
    const bool ordinary = ::getuid() != 0 || ::setuid(65534) == 0;
    const bool right = AttributeDirectoryExists(open) && !AttributeDirectoryExists(closed);
    ::_exit(ordinary && right ? 0 : 1);
}

TEST(AttributeFileWithoutStandardInput, IsWrittenAndReadByTheDescriptorZero) {
    const TestFolder folder;
    const ClosedStandardInput closed;
    EXPECT_TRUE(WriteAttribute(folder.Path("value"), "1"));
    EXPECT_EQ(ReadAttributeWord(folder.Path("value")), "1");
    EXPECT_EQ(::fcntl(STDIN_FILENO, F_GETFD), -1) << "left open";
}

TEST(AttributeDirectory, ThatMayNotBeReadDoesNotExist) {
    const TestFolder folder;
    const std::string closed = folder.Path("closed");
    ASSERT_EQ(::mkdir(closed.c_str(), 0777), 0);
    ASSERT_EQ(::chmod(folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(closed.c_str(), 0333), 0);
    EXPECT_EXIT(LookAtFolders(folder.Path(), closed), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace tavrelin
