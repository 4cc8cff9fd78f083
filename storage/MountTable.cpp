#include "storage/MountTable.h"

#include <array>
#include <cstdio>
#include <memory>

namespace tavrelin {

namespace {

constexpr const char* kMountTable = "/etc/mtab";
constexpr std::size_t kEntryText = 4096; // longer entries are cut by the C library

struct CloseMountTable {
    void operator()(FILE* table) const { ::endmntent(table); }
};

} // namespace

bool is_mounted(const mntent*& entry, const std::string& path) {
    entry = nullptr;
    const std::unique_ptr<FILE, CloseMountTable> table(::setmntent(kMountTable, "r"));
    if (table == nullptr) {
        return false;
    }
    std::array<char, kEntryText> text{};
    mntent record{};
    while ((entry = ::getmntent_r(table.get(), &record, text.data(), kEntryText)) != nullptr) {
        if (std::string(entry->mnt_dir).find(path) != std::string::npos) {
            return true;
        }
    }
    return false;
}

} // namespace tavrelin
