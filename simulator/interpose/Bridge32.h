#pragma once

#include <cstdint>

/// Files of the board in plain numbers, for the stand-ins that are compiled with another idea of
/// the C library's records than the rest of the simulator (Interpose32.cpp).
namespace sim::bridge {

/// What programs look at in a file's status; the rest is 0, a single link aside.
struct FileStatus {
    unsigned mode;
    std::int64_t size;
};

/// Each tells whether the calling thread takes part in a simulation that answers the call; result
/// is then what the call returns, with errno set.
bool PathStatus(const char* path, bool followLinks, FileStatus& status, int& result);
bool DescriptorStatus(int descriptor, FileStatus& status, int& result);
bool Control(int descriptor, unsigned long request, void* argument, int& result);

} // namespace sim::bridge
