#include "simulator/kernel/OpenFile.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace sim {

bool OpenFile::Readable() const {
    return (flags_ & O_ACCMODE) != O_WRONLY;
}
bool OpenFile::Writable() const {
    return (flags_ & O_ACCMODE) != O_RDONLY;
}
bool OpenFile::Synchronous() const {
    return (flags_ & O_SYNC) == O_SYNC;
}

long OpenFile::Read(void* /*buffer*/, std::size_t /*size*/) {
    return -EINVAL;
}
long OpenFile::Write(const void* /*data*/, std::size_t /*size*/) {
    return -EINVAL;
}
long OpenFile::Seek(std::int64_t /*offset*/, int /*whence*/) {
    return -ESPIPE;
}
long OpenFile::Control(unsigned long /*request*/, void* /*argument*/) {
    return -ENOTTY;
}

long PlacedFile::Seek(std::int64_t offset, int whence) {
    const std::int64_t place = offset + (whence == SEEK_CUR ? place_ : 0);
    if ((whence != SEEK_SET && whence != SEEK_CUR) || place < 0) {
        return -EINVAL;
    }
    place_ = place;
    return static_cast<long>(place);
}

} // namespace sim
