#include "simulator/interpose/Bridge32.h"

#include "simulator/interpose/Gate.h"

#include <sys/ioctl.h>
#include <sys/stat.h>

namespace sim::bridge {
namespace {

FileStatus Plain(const struct stat64& status) {
    return {status.st_mode, status.st_size};
}

} // namespace

bool PathStatus(const char* path, bool followLinks, FileStatus& status, int& result) {
    Gate gate(path);
    if (!gate) {
        return false;
    }
    struct stat64 found {};
    result = AsResult(gate->kernel.paths.Status(path, followLinks, &found));
    status = Plain(found);
    return true;
}

bool DescriptorStatus(int descriptor, FileStatus& status, int& result) {
    Gate gate(descriptor);
    if (!gate) {
        return false;
    }
    struct stat64 found {};
    result = AsResult(gate->kernel.DescriptorStatus(descriptor, &found));
    status = Plain(found);
    return true;
}

// By way of the stand-in for the older name, which does all there is to do.
bool Control(int descriptor, unsigned long request, void* argument, int& result) {
    if (Simulation::OfThisThread() == nullptr) {
        return false;
    }
    result = ioctl(descriptor, request, argument);
    return true;
}

} // namespace sim::bridge
