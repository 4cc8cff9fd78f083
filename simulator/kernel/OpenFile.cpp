#include "simulator/kernel/OpenFile.h"

#include <cerrno>

namespace sim {

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
