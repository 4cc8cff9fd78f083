#include "simulator/kernel/OpenFile.h"

#include <cerrno>
#include <fcntl.h>

namespace sim {

bool OpenFile::readable() const {
    return (flags_ & O_ACCMODE) != O_WRONLY;
}
bool OpenFile::writable() const {
    return (flags_ & O_ACCMODE) != O_RDONLY;
}
bool OpenFile::synchronous() const {
    return (flags_ & O_SYNC) == O_SYNC;
}

long OpenFile::read(void* /*buffer*/, std::size_t /*size*/) {
    return -EINVAL;
}
long OpenFile::write(const void* /*data*/, std::size_t /*size*/) {
    return -EINVAL;
}
long OpenFile::seek(std::int64_t /*offset*/, int /*whence*/) {
    return -ESPIPE;
}
long OpenFile::control(unsigned long /*request*/, void* /*argument*/) {
    return -ENOTTY;
}

} // namespace sim
