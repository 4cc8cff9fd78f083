#include "simulator/kernel/CardFile.h"

#include "simulator/kernel/ErrnoNames.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace sim {

CardFile::~CardFile() {
    if (onCard_) {
        card_.CloseFile(hostPath_);
    }
    card_.AddWriters(writes_ ? -1 : 0);
    if (host_ >= 0) {
        real::CloseOwn(host_);
    }
}

long CardFile::OpenHost(int flags, unsigned mode) {
    if (onCard_ && (flags & O_TRUNC) != 0 && !card_.Healthy()) {
        card_.CutFile(hostPath_, 0);
        flags &= ~O_TRUNC;
    }
    host_ = real::open(hostPath_.c_str(), flags | O_CLOEXEC, mode);
    if (host_ < 0) {
        return -errno;
    }
    host_ = real::MakeOwn(host_);
    writes_ = onCard_ && (flags & O_ACCMODE) != O_RDONLY;
    card_.AddWriters(writes_ ? 1 : 0);
    return 0;
}

long CardFile::Read(void* buffer, std::size_t size) {
    if (onCard_ && !card_.Healthy()) {
        events_.Add("read", Path(), "EIO");
        return -EIO;
    }
    const ssize_t count = real::read(host_, buffer, size);
    return count < 0 ? -errno : count;
}

long CardFile::Write(const void* data, std::size_t size) {
    const int error = onCard_ ? card_.Write(static_cast<std::int64_t>(size)) : 0;
    events_.Add("write", Path(), [&] {
        return EventLog::Quoted({static_cast<const char*>(data), size}) +
               (error != 0 ? " " + ErrnoName(error) : std::string());
    });
    if (error == EIO) {
        card_.KeepFile(hostPath_);
    }
    if (error != 0) {
        return -error;
    }
    const ssize_t count = real::write(host_, data, size);
    return count < 0 ? -errno : count;
}

long CardFile::Seek(std::int64_t offset, int whence) {
    const off64_t reached = lseek64(host_, offset, whence);
    return reached < 0 ? -errno : static_cast<long>(reached);
}

} // namespace sim
