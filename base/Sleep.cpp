#include "base/Sleep.h"

#include <cerrno>
#include <ctime>

namespace tavrelin {

void SleepMilliseconds(std::uint32_t milliseconds) {
    timespec remaining{};
    remaining.tv_sec = milliseconds / 1000;
    remaining.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000;
    // Any other failure would repeat for ever.
    while (::nanosleep(&remaining, &remaining) != 0 && errno == EINTR) {
    }
}

} // namespace tavrelin
