#include "simulator/board/BoardPaths.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace sim {
namespace {

constexpr std::array kFolders{
    kGpio,       kPwm,           kAnalog,     kCardBlock,  kMemoryDevice,     kSpiDevice,
    kCardDevice, kCardPartition, kMountPoint, kMountTable, kMountInformation,
};

} // namespace

bool Within(std::string_view path, std::string_view folder) {
    return path.substr(0, folder.size()) == folder &&
           (path.size() == folder.size() || path[folder.size()] == '/');
}

bool IsBoardPath(std::string_view path) {
    if (!IsPlainPath(path)) {
        const std::string plain = std::filesystem::path(path).lexically_normal().string();
        return IsPlainPath(plain) && IsBoardPath(plain);
    }
    return Within(path, kClasses) || Within(path, kBuses) || Within(path, kBlocks) ||
           IsDevicePath(path);
}

bool IsDevicePath(std::string_view path) {
    return std::any_of(kFolders.begin(), kFolders.end(),
                       [&](std::string_view folder) { return Within(path, folder); });
}

bool BeginsDevicePath(std::string_view beginning) {
    return IsDevicePath(beginning) ||
           std::any_of(kFolders.begin(), kFolders.end(), [&](std::string_view folder) {
               return folder.substr(0, beginning.size()) == beginning;
           });
}

bool IsPlainPath(std::string_view path) {
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        if (path[i] == '/' && (path[i + 1] == '/' || path[i + 1] == '.')) {
            const std::string_view name = path.substr(i + 1, path.find('/', i + 1) - i - 1);
            if (name.empty() || name == "." || name == "..") {
                return false;
            }
        }
    }
    return true;
}

} // namespace sim
