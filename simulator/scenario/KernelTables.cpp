#include "simulator/scenario/KernelTables.h"

#include "simulator/board/BoardPaths.h"

namespace sim {
namespace {

/// folder: where on the board the path lies.
void CheckBoardPath(TomlTable& table, std::string_view key, const std::string& path,
                    std::string_view folder) {
    if (!IsPlainPath(path) || !IsDevicePath(path) || !Within(path, folder)) {
        table.Fail(key, "\"" + path +
                            "\" is no path of the board; takes one such as "
                            "\"/sys/class/gpio/pioB18/value\"");
    }
}

} // namespace

void ReadMountTable(TomlTable& table, MountSetup& mounts) {
    table.Read("present", mounts.tablePresent);
    table.ReadStrings("lines", mounts.lines);
}

void ReadFileSystem(TomlTable& table, MountSetup& mounts) {
    constexpr std::int64_t most = 1LL << 60;
    FileSystem system;
    table.Require("directory");
    table.Read("directory", system.directory);
    table.ReadInteger("block_size", system.blockSize, -2'147'483'648, 2'147'483'647);
    table.ReadInteger("blocks", system.blocks, 0, most);
    table.ReadInteger("free", system.freeBlocks, 0, most);
    table.ReadInteger("available", system.availableBlocks, 0, most);
    mounts.fileSystems.push_back(system);
}

void ReadMissing(TomlTable& table, PathChanges& paths) {
    std::vector<std::string> missing;
    table.ReadStrings("missing", missing);
    for (const std::string& path : missing) {
        CheckBoardPath(table, "missing", path, "");
    }
    paths.missing.insert(missing.begin(), missing.end());
}

void ReadAttributes(TomlTable& table, PathChanges& paths) {
    table.Texts([&](const std::string& path, const std::string& text) {
        CheckBoardPath(table, path, path, kSysfs);
        paths.replaced[path] = text;
    });
}

} // namespace sim
