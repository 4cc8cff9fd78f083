// The C library's own input and output on a stream would pass by the simulated kernel, because it
// reads and writes inside the library: on a stream of a board file it stops the run.

#include "simulator/interpose/Gate.h"
#include "simulator/libc/Real.h"

#include <cstdarg>
#include <cstdio>
#include <string>

namespace {

using sim::Gate;

void RefuseStream(const char* call, FILE* stream) {
    if (Gate gate(fileno(stream)); gate) {
        gate->kernel.calls.Unmodelled(std::string(call) + " of " +
                                      gate->kernel.PathOf(fileno(stream)));
    }
}

} // namespace

extern "C" {

size_t fread(void* buffer, size_t size, size_t count, FILE* stream) {
    RefuseStream("fread", stream);
    return SIM_REAL(fread)(buffer, size, count, stream);
}

char* fgets(char* buffer, int size, FILE* stream) {
    RefuseStream("fgets", stream);
    return SIM_REAL(fgets)(buffer, size, stream);
}

int fgetc(FILE* stream) {
    RefuseStream("fgetc", stream);
    return SIM_REAL(fgetc)(stream);
}

#undef getc
int getc(FILE* stream) {
    RefuseStream("getc", stream);
    return SIM_REAL(fgetc)(stream);
}

ssize_t getline(char** line, size_t* size, FILE* stream) {
    RefuseStream("getline", stream);
    return SIM_REAL(getline)(line, size, stream);
}

int vfscanf(FILE* stream, const char* format, va_list arguments) {
    RefuseStream("fscanf", stream);
    return SIM_REAL(vfscanf)(stream, format, arguments);
}

int __isoc99_fscanf(FILE* stream, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int result = vfscanf(stream, format, arguments);
    va_end(arguments);
    return result;
}

int fputs(const char* text, FILE* stream) {
    RefuseStream("fputs", stream);
    return SIM_REAL(fputs)(text, stream);
}

int vfprintf(FILE* stream, const char* format, va_list arguments) {
    RefuseStream("fprintf", stream);
    return SIM_REAL(vfprintf)(stream, format, arguments);
}

int fprintf(FILE* stream, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int result = vfprintf(stream, format, arguments);
    va_end(arguments);
    return result;
}

int __fprintf_chk(FILE* stream, int /*flag*/, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int result = vfprintf(stream, format, arguments);
    va_end(arguments);
    return result;
}

} // extern "C"
