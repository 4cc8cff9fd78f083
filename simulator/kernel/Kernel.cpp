#include "simulator/kernel/Kernel.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/kernel/CallCosts.h"
#include "simulator/kernel/TextFile.h"
#include "simulator/libc/Real.h"
#include "simulator/scenario/ErrnoNames.h"
#include "simulator/time/ThreadSelf.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace sim {
namespace {

constexpr std::string_view mountPoint = "/mnt/sd-card";
constexpr std::string_view spiDevice = "/dev/spidev32765.1";
constexpr std::string_view memoryDevice = "/dev/mem";

bool writes(int flags) {
    return (flags & O_ACCMODE) != O_RDONLY;
}
bool reads(int flags) {
    return (flags & O_ACCMODE) != O_WRONLY;
}

/// The physical memory device: nothing but its mapping is used.
class MemoryFile : public OpenFile {
  public:
    using OpenFile::OpenFile;
    unsigned mode() const override { return S_IFCHR | 0600U; }
};

int flagsOf(std::string_view mode) {
    const bool both = mode.find('+') != std::string_view::npos;
    if (mode.empty() || mode[0] == 'r') {
        return both ? O_RDWR : O_RDONLY;
    }
    const int access = both ? O_RDWR : O_WRONLY;
    return access | O_CREAT | (mode[0] == 'a' ? O_APPEND : O_TRUNC);
}

} // namespace

Kernel::Kernel(const RunOptions& options, Board& board, EventLog& events, Faults& faults,
               Timeline& timeline, Scheduler& scheduler)
    : root_(options.root), boardPresent_(options.scenario.boardPresent),
      mountTableExists_(options.scenario.mountTableExists),
      mountTable_(options.scenario.mountTable), fileSystems_(options.scenario.fileSystems),
      costs_(options.ioCosts), board_(board), events_(events), faults_(faults), timeline_(timeline),
      scheduler_(scheduler), sysfs_(board, options.scenario) {
    for (const std::string& folder : {root_ + "/rootfs", root_ + "/rootfs/mnt", cardFolder()}) {
        real::mkdir(folder.c_str(), 0755);
    }
    if (options.scenario.mountPointExists) {
        real::mkdir(mountPointFolder().c_str(), 0755);
    }
}

bool Kernel::owns(std::string_view path) {
    return isBoardPath(path);
}

long Kernel::enter(std::string_view call, std::string_view path) {
    if (!isPlainPath(path)) {
        unmodelled(std::string(call) + " of " + std::string(path) + ", a path with dots in it");
    }
    auto counted = counts_.find(call);
    if (counted == counts_.end()) {
        counted = counts_.emplace(std::string(call), 0).first;
    }
    ++counted->second;
    board_.settle();
    if (costs_) {
        timeline_.work(callCost(call));
    }
    scheduler_.chance(*threadSelf());
    cut_.reset();
    if (const auto hit = faults_.meet(call, path)) {
        cut_ = hit->bytes;
        if (hit->error != 0) {
            events_.add(call, path.empty() ? "-" : path, errnoName(hit->error));
        }
        return -hit->error;
    }
    return 0;
}

long Kernel::open(const char* path, int flags, unsigned mode) {
    std::unique_ptr<OpenFile> file;
    long error = enter("open", path);
    if (error == 0) {
        error = openFile(path, flags, file);
        if (error != 0) {
            events_.add("open", path, errnoName(static_cast<int>(-error)));
        } else {
            file->openedWith(flags);
        }
    }
    if (auto* card = dynamic_cast<CardFile*>(file.get()); error == 0 && card != nullptr) {
        error = card->openHost(flags, mode);
        events_.add("open", path, error != 0 ? errnoName(static_cast<int>(-error)) : "ok");
    }
    return error != 0 ? error : files_.add(std::move(file));
}

FILE* Kernel::openStream(const char* path, const char* mode) {
    std::unique_ptr<OpenFile> file;
    long error = enter("open", path);
    if (error == 0) {
        error = openFile(path, flagsOf(mode), file);
        if (error != 0) {
            events_.add("open", path, errnoName(static_cast<int>(-error)));
        } else {
            file->openedWith(flagsOf(mode));
        }
    }
    if (error != 0) {
        errno = static_cast<int>(-error);
        return nullptr;
    }
    auto* card = dynamic_cast<CardFile*>(file.get());
    FILE* stream = real::fopen(card != nullptr ? card->hostPath().c_str() : "/dev/null", mode);
    if (card != nullptr) {
        events_.add("open", path, stream == nullptr ? errnoName(errno) : "ok");
    }
    if (stream != nullptr) {
        if (card != nullptr) {
            card->borrowHost(fileno(stream));
        }
        files_.addAt(fileno(stream), std::move(file));
    }
    return stream;
}

long Kernel::openFile(const std::string& path, int flags, std::unique_ptr<OpenFile>& file) {
    long error = 0;
    if (within(path, "/sys")) {
        error = openAttribute(path, flags, file);
    } else if (sysfs_.taken(path)) {
        error = -ENOENT;
    } else if (within(path, mountPoint)) {
        error = openCardFile(path, flags, file);
    } else if (path == spiDevice || path == memoryDevice) {
        error = openDevice(path, file);
    } else {
        unmodelled("open of " + path);
    }
    return error;
}

long Kernel::openDevice(const std::string& path, std::unique_ptr<OpenFile>& file) {
    if (!boardPresent_) {
        return -ENOENT;
    }
    if (path == spiDevice) {
        file = std::make_unique<SpiFile>(path, board_, spi_, events_);
    } else {
        file = std::make_unique<MemoryFile>(path);
    }
    return 0;
}

long Kernel::openAttribute(const std::string& path, int flags, std::unique_ptr<OpenFile>& file) {
    SysfsNode node = sysfs_.find(path);
    switch (node.kind) {
    case SysfsNode::Kind::missing:
        return (flags & O_CREAT) != 0 && node.parentExists ? -EACCES : -ENOENT;
    case SysfsNode::Kind::directory:
        if (writes(flags) || (flags & O_CREAT) != 0) {
            return -EISDIR;
        }
        file = std::make_unique<DirectoryFile>(path);
        return 0;
    case SysfsNode::Kind::attribute:
        break;
    }
    if ((writes(flags) && !node.store) || (reads(flags) && !node.show)) {
        return -EACCES;
    }
    file = std::make_unique<TextFile>(path, std::move(node), sysfs_, events_);
    return 0;
}

std::string Kernel::hostPath(std::string_view path) const {
    return (board_.card.mounted() ? cardFolder() : mountPointFolder()) +
           std::string(path.substr(mountPoint.size()));
}

long Kernel::openCardFile(const std::string& path, int flags, std::unique_ptr<OpenFile>& file) {
    const std::string host = hostPath(path);
    const bool onCard = board_.card.mounted();
    struct stat64 status {};
    const bool exists = real::stat(host.c_str(), &status) == 0;
    if (onCard && writes(flags)) {
        const int error = exists ? board_.card.openForWriting() : board_.card.createFile();
        if (error != 0 && (exists || (flags & O_CREAT) != 0)) {
            return -error;
        }
    }
    file = std::make_unique<CardFile>(path, host, onCard, board_.card, events_);
    return 0;
}

long Kernel::close(int descriptor) {
    const OpenFile* file = files_.find(descriptor);
    const long error = enter("close", file->path());
    if (dynamic_cast<const CardFile*>(file) != nullptr && error == 0) {
        events_.add("close", file->path(), "ok");
    }
    files_.remove(descriptor);
    return error;
}

long Kernel::closeStream(FILE* stream) {
    const int descriptor = fileno(stream);
    return owns(descriptor) ? close(descriptor) : 0;
}

long Kernel::cutShort(std::size_t& size) {
    if (cut_ && *cut_ < size) {
        size = static_cast<std::size_t>(*cut_);
    }
    return 0;
}

long Kernel::read(int descriptor, void* buffer, std::size_t size) {
    OpenFile* file = files_.find(descriptor);
    auto* attribute = dynamic_cast<TextFile*>(file);
    const bool level = attribute != nullptr && attribute->line().has_value();
    if (const long error = enter("read", file->path()); error != 0) {
        return error;
    }
    if (!file->readable()) {
        return -EBADF;
    }
    cutShort(size);
    if (level) {
        timeline_.pollsLine(*attribute->line());
    }
    const bool anew = level && attribute->atStart();
    const long count = file->read(buffer, size);
    if (anew && count >= 0) {
        timeline_.lineRead(*attribute->line(),
                           count > 0 && static_cast<const char*>(buffer)[0] == '1');
        attribute->sawEdges(board_.lines.at(*attribute->line()).edges);
    }
    return count;
}

long Kernel::write(int descriptor, const void* data, std::size_t size) {
    OpenFile* file = files_.find(descriptor);
    if (const long error = enter("write", file->path()); error != 0) {
        return error;
    }
    if (!file->writable()) {
        return -EBADF;
    }
    timeline_.busy();
    cutShort(size);
    if (costs_ && dynamic_cast<const CardFile*>(file) != nullptr) {
        timeline_.work(callCost("card write"));
    }
    const long count = file->write(data, size);
    scheduler_.wake(&sysfs_);
    return count;
}

long Kernel::seek(int descriptor, std::int64_t offset, int whence) {
    OpenFile* file = files_.find(descriptor);
    const long error = enter("lseek", file->path());
    return error != 0 ? error : file->seek(offset, whence);
}

long Kernel::control(int descriptor, unsigned long request, void* argument) {
    OpenFile* file = files_.find(descriptor);
    if (const long error = enter("ioctl", file->path()); error != 0) {
        return error;
    }
    timeline_.busy();
    return file->control(request, argument);
}

bool Kernel::cardFilesOpen() const {
    return files_.any([](const OpenFile& file) {
        const auto* card = dynamic_cast<const CardFile*>(&file);
        return card != nullptr && card->onCard();
    });
}

} // namespace sim
