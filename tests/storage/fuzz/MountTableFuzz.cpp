// Feeds arbitrary bytes as the mount table to the question whether the card is mounted and to the
// listing of free space. Run by scripts/fuzz; corpus/ holds what a fresh run begins with.

#include "storage/MountTable.h"
#include "storage/StorageSpace.h"

#include "tests/support/FuzzInput.h"

#include <sys/vfs.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <sstream>

namespace {

std::string table;

} // namespace

// What the kernel lists, and how it answers for a directory, comes from the fuzzer as well.
extern "C" FILE* setmntent(const char* /*file*/, const char* mode) {
    return table.empty() ? nullptr : ::fmemopen(table.data(), table.size(), mode);
}

extern "C" int statfs64(const char* directory, struct statfs64* space) noexcept {
    const std::string_view name(directory);
    space->f_bsize = static_cast<decltype(space->f_bsize)>(std::hash<std::string_view>()(name));
    space->f_blocks = name.size() << 56U;
    space->f_bfree = name.size();
    space->f_bavail = 0;
    return name.size() % 3 == 0 ? -1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavrelin;
    table.assign(reinterpret_cast<const char*>(data), size);
    const mntent* entry = nullptr;
    const bool mounted = is_mounted(entry, "/mnt/sd-card");
    Hold(mounted == (entry != nullptr));
    Hold(mounted || !is_mounted(entry, "/mnt/sd-card2"));

    std::ostringstream listing;
    std::streambuf* console = std::cout.rdbuf(listing.rdbuf());
    print_storage_space(entry);
    std::cout.rdbuf(console);
    std::cout.clear();
    const auto lines = std::ranges::count(table, '\n') + 1;
    Hold(std::ranges::count(listing.str(), '\n') <= lines || table.find('\\') != std::string::npos);
    return 0;
}
