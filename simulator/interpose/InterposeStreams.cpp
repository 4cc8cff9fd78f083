// Stands in for what a C++ stream calls on its file, where no gate brings the system calls under it
// to the board.

#include "simulator/interpose/Gate.h"
#include "simulator/libc/Real.h"

#include <cstdio>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/uio.h>

namespace {

using sim::AsResult;
using sim::Gate;

int FlagsOf(std::string_view mode) {
    const bool both = mode.find('+') != std::string_view::npos;
    if (mode.empty() || mode[0] == 'r') {
        return both ? O_RDWR : O_RDONLY;
    }
    return (both ? O_RDWR : O_WRONLY) | O_CREAT | (mode[0] == 'a' ? O_APPEND : O_TRUNC);
}

} // namespace

extern "C" {

FILE* fopen64(const char* path, const char* mode) {
    Gate gate(path);
    if (!gate) {
        return sim::real::fopen(path, mode);
    }
    const int file = AsResult(gate->kernel.Open(path, FlagsOf(mode), 0666));
    if (file < 0) {
        return nullptr;
    }
    if (std::string_view(mode).starts_with("a")) { // as the C library begins at the end
        gate->kernel.Seek(file, 0, SEEK_END);
    }
    return SIM_REAL(fdopen)(file, mode);
}
FILE* fopen(const char* path, const char* mode) {
    return fopen64(path, mode);
}

int fclose(FILE* stream) {
    if (Gate gate(fileno(stream)); gate) {
        const long error = gate->kernel.Close(fileno(stream));
        gate->kernel.OtherDescriptorsChange(); // the stream's own number, too
        static_cast<void>(SIM_REAL(fclose)(stream) == 0);
        return AsResult(error);
    }
    return SIM_REAL(fclose)(stream);
}

ssize_t writev(int descriptor, const iovec* pieces, int count) {
    if (Gate gate(descriptor); gate) {
        std::string whole;
        for (int i = 0; i < count; ++i) {
            whole.append(static_cast<const char*>(pieces[i].iov_base), pieces[i].iov_len);
        }
        return AsResult<ssize_t>(gate->kernel.Write(descriptor, whole.data(), whole.size()));
    }
    return SIM_REAL(writev)(descriptor, pieces, count);
}

} // extern "C"
