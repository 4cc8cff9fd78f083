// Reads along what the program shows on standard output; nothing in it is changed.

#include "simulator/interpose/Gate.h"
#include "simulator/libc/Real.h"

#include <unistd.h>

using sim::Gate;

extern "C" {

size_t fwrite(const void* data, size_t size, size_t count, FILE* stream) {
    if (stream == stdout) {
        if (Gate gate; gate) {
            gate->Show(data, size * count, stream);
            return count;
        }
    }
    if (stream == stderr) {
        if (Gate gate; gate) {
            gate->AboutToShow({static_cast<const char*>(data), size * count}, "stderr");
        }
    }
    return SIM_REAL(fwrite)(data, size, count, stream);
}

int fputc(int character, FILE* stream) {
    if (stream == stdout) {
        if (Gate gate; gate) {
            const char byte = static_cast<char>(character);
            gate->Show(&byte, 1, stream);
            return static_cast<unsigned char>(byte);
        }
    }
    return SIM_REAL(fputc)(character, stream);
}

int fflush(FILE* stream) {
    if (stream == stdout || stream == nullptr) {
        if (Gate gate; gate) {
            return gate->Flush(stream);
        }
    }
    return SIM_REAL(fflush)(stream);
}

#undef putc
int putc(int character, FILE* stream) {
    return fputc(character, stream);
}

} // extern "C"
