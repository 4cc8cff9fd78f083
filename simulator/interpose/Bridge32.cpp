#include "simulator/interpose/Bridge32.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/run/Simulation.h"

#include <ctime>
#include <sys/ioctl.h>

// Goes by way of the stand-ins for the C library's older records, which do all there is to do.
namespace sim::bridge {

bool WallOrBoardTime(int clock, std::int64_t& nanoseconds, int& result) {
    if (Simulation::OfThisThread() == nullptr) {
        return false;
    }
    timespec time{};
    result = clock_gettime(static_cast<clockid_t>(clock), &time);
    nanoseconds = static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
    return true;
}

bool SleepFor(std::int64_t nanoseconds, std::int64_t& rest, int& result) {
    if (Simulation::OfThisThread() == nullptr) {
        return false;
    }
    const timespec span{static_cast<time_t>(nanoseconds / 1'000'000'000),
                        static_cast<long>(nanoseconds % 1'000'000'000)};
    timespec left{};
    result = nanosleep(&span, &left);
    rest = static_cast<std::int64_t>(left.tv_sec) * 1'000'000'000 + left.tv_nsec;
    return true;
}

bool Status(const char* path, bool followLinks, unsigned& mode, int& result) {
    if (!IsBoardPath(path) || Simulation::OfThisThread() == nullptr) {
        return false;
    }
    struct stat64 found {};
    result = followLinks ? stat64(path, &found) : lstat64(path, &found);
    mode = found.st_mode;
    return true;
}

bool Control(int descriptor, unsigned long request, void* argument, int& result) {
    if (Simulation::OfThisThread() == nullptr) {
        return false;
    }
    result = ioctl(descriptor, request, argument);
    return true;
}

} // namespace sim::bridge
