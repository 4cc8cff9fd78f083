// The storage listing of the machine that runs the tests, beside what `df` says of it.

#include "storage/StorageSpace.h"

#include "tests/support/CapturedConsole.h"
#include "tests/support/Command.h"
#include "tests/support/Text.h"

#include <gtest/gtest.h>

#include <mntent.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cinttypes>
#include <cstddef>
#include <cstdio>
#include <map>
#include <memory>
#include <set>
#include <sstream>

namespace tavrelin {
namespace {

/// A file system as a listing has it, in bytes.
struct Space {
    std::uint64_t size = 0;
    std::uint64_t free = 0;
    std::uint64_t available = 0;

    bool operator==(const Space&) const = default;
};
using Spaces = std::map<std::string, Space>; // by directory

struct MountedDirectory {
    std::string device;
    std::string directory;

    bool operator==(const MountedDirectory&) const = default;
};

/// The mount table and its listing, taken together.
struct Look {
    std::vector<MountedDirectory> table;
    std::vector<std::string> lines;
};

// What the mount table says, without those directories that nobody may look into. A directory that
// is in use twice shows its last file system.
std::vector<MountedDirectory> MountTable() {
    std::vector<MountedDirectory> entries;
    const std::unique_ptr<FILE, int (*)(FILE*)> table(::setmntent("/etc/mtab", "r"), ::endmntent);
    while (const mntent* entry = table ? ::getmntent(table.get()) : nullptr) {
        struct statfs ignored {};
        if (::statfs(entry->mnt_dir, &ignored) == 0) {
            entries.push_back({entry->mnt_fsname, entry->mnt_dir});
        }
    }
    return entries;
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
        look.table = MountTable();
        look.lines = Listing();
    } while (look.table != MountTable());
    return look;
}

// df counts in fragments where the listing counts in blocks: they must be the same to compare.
bool CountsInBlocks(const std::string& directory) {
    struct statfs system {};
    return ::statfs(directory.c_str(), &system) == 0 && system.f_bsize == system.f_frsize;
}

// What df sees, file systems without any size and without figures left out.
Spaces SpacesOfDf() {
    Spaces spaces;
    const CommandResult df = RunCommand({"df", "-a", "-B1", "--output=size,used,avail,target"});
    for (const std::string& line : LinesOf(df.output)) {
        std::istringstream words(line);
        std::uint64_t size = 0;
        std::uint64_t used = 0;
        std::uint64_t available = 0;
        std::string directory;
        if (words >> size >> used >> available >> std::ws && std::getline(words, directory) &&
            CountsInBlocks(directory)) {
            spaces[directory] = {size, size - used, available};
        }
    }
    return spaces;
}

Spaces SpacesOf(const Look& look) {
    Spaces spaces;
    for (std::size_t line = 0; line < std::min(look.lines.size(), look.table.size()); ++line) {
        const std::string& text = look.lines[line];
        const auto& [device, directory] = look.table[line];
        const std::size_t figures = std::min(text.size(), device.size() + 1 + directory.size());
        Space space;
        if (std::sscanf(text.c_str() + figures, " size=%" SCNu64 " free=%" SCNu64 " avail=%" SCNu64,
                        &space.size, &space.free, &space.available) == 3) {
            spaces[directory] = space;
        }
    }
    return spaces;
}

TEST(StorageOfThisMachine, HasALineForEachEntryOfItsTable) {
    const Look look = LookAtMachine();
    ASSERT_FALSE(look.table.empty());
    ASSERT_EQ(look.lines.size(), look.table.size());
    for (std::size_t line = 0; line < look.lines.size(); ++line) {
        const std::string start =
            look.table[line].device + " " + look.table[line].directory + " size=";
        EXPECT_EQ(look.lines[line].substr(0, start.size()), start);
    }
}

// Other programs write to the same file systems all the time: each must agree with df in one of a
// hundred looks.
TEST(StorageOfThisMachine, IsWhatDfSays) {
    std::set<std::string> agreed;
    Spaces df = SpacesOfDf();
    ASSERT_FALSE(df.empty());
    for (int look = 0; look < 100 && agreed.size() < df.size(); ++look) {
        const Spaces listed = SpacesOf(LookAtMachine());
        for (const auto& [directory, space] : df) {
            const auto found = listed.find(directory);
            if (found != listed.end() && found->second == space) {
                agreed.insert(directory);
            }
        }
        df = SpacesOfDf();
    }
    for (const auto& [directory, space] : df) {
        EXPECT_TRUE(agreed.contains(directory)) << directory << ": df says " << space.size << " "
                                                << space.free << " " << space.available;
    }
}

} // namespace
} // namespace tavrelin
