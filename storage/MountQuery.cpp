#include "storage/MountQuery.h"

#include "storage/MountTable.h"

namespace tavrelin {

namespace {

bool SetUnlessEmpty(std::string& field, const std::string& text) {
    if (text.empty()) {
        return false;
    }
    field = text;
    return true;
}

} // namespace

bool MountQuery::SetMountPoint(const std::string& text) {
    return SetUnlessEmpty(mountPoint_, text);
}

bool MountQuery::SetDevice(const std::string& text) {
    return SetUnlessEmpty(device_, text);
}

bool MountQuery::SetFileSystem(const std::string& text) {
    return SetUnlessEmpty(fileSystem_, text);
}

bool MountQuery::SetOptions(const std::string& text) {
    return SetUnlessEmpty(options_, text);
}

bool MountQuery::IsListed() {
    return is_mounted(entry_, mountPoint_);
}

} // namespace tavrelin
