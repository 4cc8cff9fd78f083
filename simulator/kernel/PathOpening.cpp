#include "simulator/kernel/Paths.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/kernel/CardFile.h"
#include "simulator/kernel/ErrnoNames.h"
#include "simulator/kernel/TextFile.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <fcntl.h>

namespace sim {
namespace {

bool Writes(int flags) {
    return (flags & O_ACCMODE) != O_RDONLY;
}
bool Reads(int flags) {
    return (flags & O_ACCMODE) != O_WRONLY;
}

/// The physical memory device: nothing but its mapping is used.
class MemoryFile : public OpenFile {
  public:
    using OpenFile::OpenFile;
    unsigned Mode() const override { return S_IFCHR | 0600U; }
};

} // namespace

long Paths::Open(const std::string& path, int flags, std::unique_ptr<OpenFile>& file) {
    long error = 0;
    if (Within(path, kSysfs)) {
        error = OpenAttribute(path, flags, file);
    } else if (tree_.TakenAway(path)) {
        error = -ENOENT;
    } else if (Within(path, kMountPoint)) {
        error = OpenCardFile(path, flags, file);
    } else if (path == kSpiDevice || path == kMemoryDevice) {
        error = OpenDevice(path, file);
    } else {
        calls_.Unmodelled("open of " + path);
    }
    if (error == 0) {
        file->OpenedWith(flags);
    } else {
        calls_.events.Add("open", path, Outcome(error));
    }
    return error;
}

long Paths::OpenDevice(const std::string& path, std::unique_ptr<OpenFile>& file) {
    if (!calls_.board.present) {
        return -ENOENT;
    }
    if (path == kSpiDevice) {
        file = std::make_unique<SpiFile>(path, calls_.board, spi_, calls_.events);
    } else {
        file = std::make_unique<MemoryFile>(path);
    }
    return 0;
}

long Paths::OpenAttribute(const std::string& path, int flags, std::unique_ptr<OpenFile>& file) {
    SysfsNode node = tree_.Find(path);
    switch (node.kind) {
    case SysfsNode::Kind::Missing:
        return (flags & O_CREAT) != 0 && node.parentExists ? -EACCES : -ENOENT;
    case SysfsNode::Kind::Directory:
        if (Writes(flags) || (flags & O_CREAT) != 0) {
            return -EISDIR;
        }
        file = std::make_unique<DirectoryFile>(path);
        return 0;
    case SysfsNode::Kind::Attribute:
        break;
    }
    if ((Writes(flags) && !node.store) || (Reads(flags) && !node.show)) {
        return -EACCES;
    }
    file = std::make_unique<TextFile>(path, std::move(node), tree_, calls_.events);
    return 0;
}

long Paths::OpenCardFile(const std::string& path, int flags, std::unique_ptr<OpenFile>& file) {
    const std::string host = HostPath(path);
    const bool onCard = calls_.board.card.mounted;
    struct stat64 status {};
    const bool exists = real::stat(host.c_str(), &status) == 0;
    if (onCard && Writes(flags)) {
        const int error =
            exists ? calls_.board.card.OpenForWriting() : calls_.board.card.CreateFile();
        if (error != 0 && (exists || (flags & O_CREAT) != 0)) {
            return -error;
        }
    }
    file = std::make_unique<CardFile>(path, host, onCard, calls_.board.card, calls_.events);
    return 0;
}

} // namespace sim
