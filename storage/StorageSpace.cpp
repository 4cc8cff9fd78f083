#include "storage/StorageSpace.h"

#include "storage/MountTableFile.h"

#include <sys/vfs.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <iostream>

namespace tavrelin {

namespace {

std::string BytesText(const struct statfs& space, std::uint64_t blocks) {
    // The block's size has 32 bits on the board, whatever it has here.
    const std::int64_t blockSize = static_cast<std::int32_t>(space.f_bsize);
    return std::to_string(static_cast<std::uint64_t>(blockSize) * blocks);
}

// Null text would not be defined as an insertion; this is what the stream makes of it.
void InsertDevice(const char* device) {
    if (device == nullptr) {
        std::cout.setstate(std::ios::badbit);
    } else {
        std::cout << device;
    }
}

void PrintSpace(const mntent& entry) {
    struct statfs space {};
    if (entry.mnt_dir == nullptr || ::statfs(entry.mnt_dir, &space) != 0) {
        return;
    }
    InsertDevice(entry.mnt_fsname);
    std::cout << " " + std::string(entry.mnt_dir) + " size=" + BytesText(space, space.f_blocks) +
                     " free=" + BytesText(space, space.f_bfree) +
                     " avail=" + BytesText(space, space.f_bavail) + "\n";
    std::cout.flush();
}

} // namespace

void print_storage_space(const mntent*& entry) {
    entry = nullptr;
    const MountTableFile table(::setmntent(kMountTable, kMountTableMode));
    if (table == nullptr) {
        return;
    }
    std::array<char, kMountEntryText> text{};
    mntent record{};
    while ((entry = ::getmntent_r(table.get(), &record, text.data(), kMountEntryText)) != nullptr) {
        PrintSpace(*entry);
    }
}

bool can_open_mount_table(const std::string& file, const std::string& mode) {
    const MountTableFile table(::setmntent(file.empty() ? kMountTable : file.c_str(),
                                           mode.empty() ? kMountTableMode : mode.c_str()));
    return true;
}

bool is_mmc_partition_mounted_by_shell() {
    // The count is to come after what was printed before.
    std::cout.flush();
    return std::system("mount | grep -c mmcblk0p1") == 1;
}

} // namespace tavrelin
