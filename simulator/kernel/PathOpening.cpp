#include "simulator/kernel/Paths.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/kernel/CardFile.h"
#include "simulator/kernel/ErrnoNames.h"
#include "simulator/kernel/FatNames.h"
#include "simulator/kernel/TextFile.h"
#include "simulator/libc/Real.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace sim {
namespace {

bool Writes(int flags) {
    return (flags & O_ACCMODE) != O_RDONLY;
}
bool Reads(int flags) {
    return (flags & O_ACCMODE) != O_WRONLY;
}

/// 0, or the negated errno that flags meet at something that is there.
long RefuseExisting(int flags, bool directory) {
    if ((flags & O_CREAT) != 0 && (flags & O_EXCL) != 0) {
        return -EEXIST;
    }
    if (directory) {
        return Writes(flags) || (flags & O_CREAT) != 0 ? -EISDIR : 0;
    }
    return (flags & O_DIRECTORY) != 0 ? -ENOTDIR : 0;
}

/// The physical memory device: nothing but its mapping and its place are used.
class MemoryFile : public PlacedFile {
  public:
    using PlacedFile::PlacedFile;
    unsigned Mode() const override { return S_IFCHR | 0600U; }
};

/// A text of the moment at which it was opened.
class Snapshot : public PlacedFile {
  public:
    Snapshot(std::string path, std::string text)
        : PlacedFile(std::move(path)), text_(std::move(text)) {}

    long Read(void* buffer, std::size_t size) override {
        const auto from = std::min(static_cast<std::size_t>(Seek(0, SEEK_CUR)), text_.size());
        const std::size_t count = text_.copy(static_cast<char*>(buffer), size, from);
        Seek(static_cast<std::int64_t>(from + count), SEEK_SET);
        return static_cast<long>(count);
    }
    unsigned Mode() const override { return S_IFREG | 0444U; }

  private:
    std::string text_;
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
    } else {
        error = OpenDevice(path, flags, file);
    }
    if (error == 0) {
        file->OpenedWith(flags);
    } else {
        calls_.events.Add("open", path, Outcome(error));
    }
    return error;
}

long Paths::OpenDevice(const std::string& path, int flags, std::unique_ptr<OpenFile>& file) {
    const long mode = Mode(path);
    if (const long error = mode < 0 ? mode : RefuseExisting(flags, false); error != 0) {
        return error;
    }
    if (path == kSpiDevice) {
        file = std::make_unique<SpiFile>(path, calls_.board, spi_, calls_.events);
    } else if (path == kMemoryDevice) {
        file = std::make_unique<MemoryFile>(path);
    } else if (path != kMountTable && path != kMountInformation) {
        calls_.Unmodelled("open of " + path);
    } else if (Writes(flags)) {
        return -EACCES;
    } else {
        file = std::make_unique<Snapshot>(path, path == kMountTable ? mounts_.Text()
                                                                    : mounts_.Information());
    }
    return 0;
}

long Paths::OpenAttribute(const std::string& path, int flags, std::unique_ptr<OpenFile>& file) {
    SysfsNode node = tree_.Find(path);
    if (node.Error() != 0) {
        const bool refused = (flags & O_CREAT) != 0 && node.parentExists;
        return refused ? -EACCES : -node.Error();
    }
    const bool directory = node.kind == SysfsNode::Kind::Directory;
    if (const long error = RefuseExisting(flags, directory); error != 0) {
        return error;
    }
    if (directory) {
        if (node.link && (flags & O_NOFOLLOW) != 0) {
            return -ELOOP;
        }
        file = std::make_unique<DirectoryFile>(path);
        return 0;
    }
    if ((Writes(flags) && !node.store) || (Reads(flags) && !node.show)) {
        return -EACCES;
    }
    file = std::make_unique<TextFile>(path, std::move(node), tree_, calls_.events);
    return 0;
}

long Paths::CheckNew(const std::string& path) const {
    const CardSlot& card = calls_.board.card;
    if (!card.mounted) {
        return 0;
    }
    return card.RefusesWriters() ? -EROFS : FatTakes(path) ? -card.CreateFile() : -EINVAL;
}

long Paths::OpenCardFile(const std::string& path, int flags, std::unique_ptr<OpenFile>& file) {
    const std::string host = HostPath(path);
    const bool onCard = calls_.board.card.mounted;
    const long standing = Mode(path);
    if (onCard && standing == -ENOENT) {
        if (const long error = (flags & O_CREAT) != 0 ? CheckNew(path) : -ENOENT; error != 0) {
            return error;
        }
    }
    if (onCard && standing >= 0 && Writes(flags)) {
        if (const int error = calls_.board.card.OpenForWriting(); error != 0) {
            return -error;
        }
    }
    file = std::make_unique<CardFile>(path, host, onCard, calls_.board.card, calls_.events);
    return 0;
}

} // namespace sim
