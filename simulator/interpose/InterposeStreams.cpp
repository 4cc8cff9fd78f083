// The C library's own input and output on a stream: on one of a board file it stops the run.

#include "simulator/interpose/Refuse.h"
#include "simulator/libc/Real.h"

#include <cstdarg>
#include <cstdio>

#undef getc

extern "C" {

SIM_REFUSE(size_t, fread, "fread", (void* buffer, size_t size, size_t count, FILE* stream), stream,
           buffer, size, count, stream)
SIM_REFUSE(char*, fgets, "fgets", (char* buffer, int size, FILE* stream), stream, buffer, size,
           stream)
SIM_REFUSE(int, fgetc, "fgetc", (FILE * stream), stream, stream)
SIM_REFUSE(int, getc, "getc", (FILE * stream), stream, stream)
SIM_REFUSE(ssize_t, getline, "getline", (char** line, size_t* size, FILE* stream), stream, line,
           size, stream)
SIM_REFUSE(int, vfscanf, "fscanf", (FILE * stream, const char* format, va_list arguments), stream,
           stream, format, arguments)
SIM_REFUSE(int, fputs, "fputs", (const char* text, FILE* stream), stream, text, stream)
SIM_REFUSE(int, vfprintf, "fprintf", (FILE * stream, const char* format, va_list arguments), stream,
           stream, format, arguments)

int __isoc99_fscanf(FILE* stream, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int result = vfscanf(stream, format, arguments);
    va_end(arguments);
    return result;
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
