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

constexpr std::string_view kMountPoint = "/mnt/sd-card";
constexpr std::string_view kSpiDevice = "/dev/spidev32765.1";
constexpr std::string_view kMemoryDevice = "/dev/mem";

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

int FlagsOf(std::string_view mode) {
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
    for (const std::string& folder : {root_ + "/rootfs", root_ + "/rootfs/mnt", CardFolder()}) {
        real::mkdir(folder.c_str(), 0755);
    }
    if (options.scenario.mountPointExists) {
        real::mkdir(MountPointFolder().c_str(), 0755);
    }
}

bool Kernel::Owns(std::string_view path) {
    return IsBoardPath(path);
}

long Kernel::Enter(std::string_view call, std::string_view path) {
    if (!IsPlainPath(path)) {
        unmodelled(std::string(call) + " of " + std::string(path) + ", a path with dots in it");
    }
    auto counted = counts_.find(call);
    if (counted == counts_.end()) {
        counted = counts_.emplace(std::string(call), 0).first;
    }
    ++counted->second;
    board_.Settle();
    if (costs_) {
        timeline_.Work(CallCost(call));
    }
    scheduler_.Chance(*ThreadSelf());
    cut_.reset();
    if (const auto hit = faults_.Meet(call, path)) {
        cut_ = hit->bytes;
        if (hit->error != 0) {
            events_.Add(call, path.empty() ? "-" : path, ErrnoName(hit->error));
        }
        return -hit->error;
    }
    return 0;
}

long Kernel::Open(const char* path, int flags, unsigned mode) {
    std::unique_ptr<OpenFile> file;
    long error = Enter("open", path);
    if (error == 0) {
        error = OpenPath(path, flags, file);
        if (error != 0) {
            events_.Add("open", path, ErrnoName(static_cast<int>(-error)));
        } else {
            file->OpenedWith(flags);
        }
    }
    if (auto* card = dynamic_cast<CardFile*>(file.get()); error == 0 && card != nullptr) {
        error = card->OpenHost(flags, mode);
        events_.Add("open", path, error != 0 ? ErrnoName(static_cast<int>(-error)) : "ok");
    }
    return error != 0 ? error : files_.Add(std::move(file));
}

FILE* Kernel::OpenStream(const char* path, const char* mode) {
    std::unique_ptr<OpenFile> file;
    long error = Enter("open", path);
    if (error == 0) {
        error = OpenPath(path, FlagsOf(mode), file);
        if (error != 0) {
            events_.Add("open", path, ErrnoName(static_cast<int>(-error)));
        } else {
            file->OpenedWith(FlagsOf(mode));
        }
    }
    if (error != 0) {
        errno = static_cast<int>(-error);
        return nullptr;
    }
    auto* card = dynamic_cast<CardFile*>(file.get());
    FILE* stream = real::fopen(card != nullptr ? card->HostPath().c_str() : "/dev/null", mode);
    if (card != nullptr) {
        events_.Add("open", path, stream == nullptr ? ErrnoName(errno) : "ok");
    }
    if (stream != nullptr) {
        if (card != nullptr) {
            card->BorrowHost(fileno(stream));
        }
        files_.AddAt(fileno(stream), std::move(file));
    }
    return stream;
}

long Kernel::OpenPath(const std::string& path, int flags, std::unique_ptr<OpenFile>& file) {
    long error = 0;
    if (Within(path, "/sys")) {
        error = OpenAttribute(path, flags, file);
    } else if (sysfs_.Taken(path)) {
        error = -ENOENT;
    } else if (Within(path, kMountPoint)) {
        error = OpenCardFile(path, flags, file);
    } else if (path == kSpiDevice || path == kMemoryDevice) {
        error = OpenDevice(path, file);
    } else {
        unmodelled("open of " + path);
    }
    return error;
}

long Kernel::OpenDevice(const std::string& path, std::unique_ptr<OpenFile>& file) {
    if (!boardPresent_) {
        return -ENOENT;
    }
    if (path == kSpiDevice) {
        file = std::make_unique<SpiFile>(path, board_, spi_, events_);
    } else {
        file = std::make_unique<MemoryFile>(path);
    }
    return 0;
}

long Kernel::OpenAttribute(const std::string& path, int flags, std::unique_ptr<OpenFile>& file) {
    SysfsNode node = sysfs_.Find(path);
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
    file = std::make_unique<TextFile>(path, std::move(node), sysfs_, events_);
    return 0;
}

std::string Kernel::HostPath(std::string_view path) const {
    return (board_.card.Mounted() ? CardFolder() : MountPointFolder()) +
           std::string(path.substr(kMountPoint.size()));
}

long Kernel::OpenCardFile(const std::string& path, int flags, std::unique_ptr<OpenFile>& file) {
    const std::string host = HostPath(path);
    const bool onCard = board_.card.Mounted();
    struct stat64 status {};
    const bool exists = real::stat(host.c_str(), &status) == 0;
    if (onCard && Writes(flags)) {
        const int error = exists ? board_.card.OpenForWriting() : board_.card.CreateFile();
        if (error != 0 && (exists || (flags & O_CREAT) != 0)) {
            return -error;
        }
    }
    file = std::make_unique<CardFile>(path, host, onCard, board_.card, events_);
    return 0;
}

long Kernel::Close(int descriptor) {
    const OpenFile* file = files_.Find(descriptor);
    const long error = Enter("close", file->Path());
    if (dynamic_cast<const CardFile*>(file) != nullptr && error == 0) {
        events_.Add("close", file->Path(), "ok");
    }
    files_.Remove(descriptor);
    return error;
}

long Kernel::CloseStream(FILE* stream) {
    const int descriptor = fileno(stream);
    return Owns(descriptor) ? Close(descriptor) : 0;
}

long Kernel::CutShort(std::size_t& size) {
    if (cut_ && *cut_ < size) {
        size = static_cast<std::size_t>(*cut_);
    }
    return 0;
}

long Kernel::Read(int descriptor, void* buffer, std::size_t size) {
    OpenFile* file = files_.Find(descriptor);
    auto* attribute = dynamic_cast<TextFile*>(file);
    const bool level = attribute != nullptr && attribute->Line().has_value();
    if (const long error = Enter("read", file->Path()); error != 0) {
        return error;
    }
    if (!file->Readable()) {
        return -EBADF;
    }
    CutShort(size);
    if (level) {
        timeline_.PollsLine(*attribute->Line());
    }
    const bool anew = level && attribute->AtStart();
    const long count = file->Read(buffer, size);
    if (anew && count >= 0) {
        timeline_.LineRead(*attribute->Line(),
                           count > 0 && static_cast<const char*>(buffer)[0] == '1');
        attribute->SawEdges(board_.lines.At(*attribute->Line()).edges);
    }
    return count;
}

long Kernel::Write(int descriptor, const void* data, std::size_t size) {
    OpenFile* file = files_.Find(descriptor);
    if (const long error = Enter("write", file->Path()); error != 0) {
        return error;
    }
    if (!file->Writable()) {
        return -EBADF;
    }
    timeline_.Busy();
    CutShort(size);
    if (costs_ && dynamic_cast<const CardFile*>(file) != nullptr) {
        timeline_.Work(CallCost("card write"));
    }
    const long count = file->Write(data, size);
    scheduler_.Wake(&sysfs_);
    return count;
}

long Kernel::Seek(int descriptor, std::int64_t offset, int whence) {
    OpenFile* file = files_.Find(descriptor);
    const long error = Enter("lseek", file->Path());
    return error != 0 ? error : file->Seek(offset, whence);
}

long Kernel::Control(int descriptor, unsigned long request, void* argument) {
    OpenFile* file = files_.Find(descriptor);
    if (const long error = Enter("ioctl", file->Path()); error != 0) {
        return error;
    }
    timeline_.Busy();
    return file->Control(request, argument);
}

bool Kernel::CardFilesOpen() const {
    return files_.Any([](const OpenFile& file) {
        const auto* card = dynamic_cast<const CardFile*>(&file);
        return card != nullptr && card->OnCard();
    });
}

} // namespace sim
