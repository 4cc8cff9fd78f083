#include "storage/MountTable.h"

#include "storage/MountTableFile.h"

#include <array>

namespace tavrelin {

bool is_mounted(const mntent*& entry, const std::string& path) {
    entry = nullptr;
    const MountTableFile table(::setmntent(kMountTable, kMountTableMode));
    if (table == nullptr) {
        return false;
    }
    std::array<char, kMountEntryText> text{};
    mntent record{};
    while ((entry = ::getmntent_r(table.get(), &record, text.data(), kMountEntryText)) != nullptr) {
        // Contained, not equal: the card counts as mounted wherever its directory's name appears.
        if (std::string_view(entry->mnt_dir).find(path) != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

} // namespace tavrelin
