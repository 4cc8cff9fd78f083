// The storage listing of the machine that runs the tests, beside what `df` says of it.

#include "storage/StorageSpace.h"

#include "tests/support/CapturedConsole.h"
#include "tests/support/Command.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mntent.h>
#include <sys/vfs.h>

#include <cinttypes>
#include <cstdio>
#include <memory>
#include <optional>

namespace tavrelin {
namespace {

/// The mount table, as "device directory" for each directory that can be examined, and its listing.
struct Look {
    std::vector<std::string> directories;
    std::vector<std::string> entries;
    std::vector<std::string> lines;
};

// A machine without a mount table, a bare root, has no entries.
Look LookAtTable() {
    Look look;
    const std::unique_ptr<FILE, int (*)(FILE*)> table(::setmntent("/etc/mtab", "r"),
                                                      [](FILE* file) { return ::endmntent(file); });
    while (const mntent* entry = table ? ::getmntent(table.get()) : nullptr) {
        struct statfs ignored {};
        if (::statfs(entry->mnt_dir, &ignored) == 0) {
            look.directories.emplace_back(entry->mnt_dir);
            look.entries.push_back(std::string(entry->mnt_fsname) + " " + entry->mnt_dir);
        }
    }
    return look;
}

std::vector<std::string> Listing() {
    CapturedConsole console;
    const mntent* entry = nullptr;
    print_storage_space(entry);
    return LinesOf(console.Output());
}

// Somebody may mount something meanwhile: looks again until the table stood still.
Look LookAtMachine() {
    Look look;
    do {
        look = LookAtTable();
        look.lines = Listing();
    } while (look.entries != LookAtTable().entries);
    return look;
}

// What df says; nothing where it counts in fragments that are no blocks, as the listing does.
std::optional<std::uint64_t> SizeByDf(const std::string& directory) {
    struct statfs system {};
    const CommandResult df = RunCommand({"df", "-B1", "--output=size", "--", directory});
    std::uint64_t size = 0;
    if (::statfs(directory.c_str(), &system) != 0 || system.f_bsize != system.f_frsize ||
        std::sscanf(df.output.c_str(), "%*s %" SCNu64, &size) != 1) {
        return std::nullopt;
    }
    return size;
}

TEST(StorageOfThisMachine, HasALineForEachEntryOfItsTable) {
    const Look look = LookAtMachine();
    std::vector<testing::Matcher<std::string>> expected;
    for (const std::string& entry : look.entries) {
        expected.push_back(testing::StartsWith(entry + " size="));
    }
    EXPECT_THAT(look.lines, testing::ElementsAreArray(expected));
}

// Other programs write to the same file systems: their sizes stay, what is free does not.
TEST(StorageOfThisMachine, IsAsLargeAsDfSays) {
    const Look look = LookAtMachine();
    ASSERT_EQ(look.lines.size(), look.entries.size());
    for (std::size_t line = 0; line < look.lines.size(); ++line) {
        std::uint64_t size = 0;
        std::uint64_t free = 0;
        std::uint64_t available = 0;
        ASSERT_EQ(std::sscanf(look.lines[line].c_str() + look.entries[line].size(),
                              " size=%" SCNu64 " free=%" SCNu64 " avail=%" SCNu64, &size, &free,
                              &available),
                  3)
            << look.lines[line];
        EXPECT_EQ(size, SizeByDf(look.directories[line]).value_or(size)) << look.lines[line];
    }
}

} // namespace
} // namespace tavrelin
