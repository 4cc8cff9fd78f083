#include "simulator/kernel/BufferedFile.h"

#include "simulator/libc/Real.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace sim {

BufferedFile::~BufferedFile() {
    Flush();
    if (IsOpen()) {
        real::CloseOwn(file_);
    }
}

bool BufferedFile::Open(const std::string& path, FileBuffer& buffer) {
    buffer_ = &buffer;
    shared_ = path == kStandardOutput;
    file_ = real::MakeOwn(
        shared_ ? SIM_REAL(fcntl64)(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)
                : real::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    return IsOpen();
}

void BufferedFile::Put(std::string_view lines) {
    if (!IsOpen()) {
        return;
    }
    if (lines.size() > FileBuffer::kSize - buffer_->used) {
        Flush();
    }
    if (lines.size() > FileBuffer::kSize) {
        WriteOut(lines);
        return;
    }
    std::copy(lines.begin(), lines.end(), buffer_->text.begin() + buffer_->used);
    buffer_->used += static_cast<std::uint32_t>(lines.size());
}

void BufferedFile::Flush() {
    if (IsOpen()) {
        WriteOut({buffer_->text.data(), buffer_->used});
    }
}

void BufferedFile::WriteOut(std::string_view text) {
    const std::uint64_t size = text.size();
    while (!text.empty() && buffer_->error == 0) {
        const ssize_t written = real::write(file_, text.data(), text.size());
        if (written > 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
            continue;
        }
        buffer_->error = written < 0 ? errno : ENOSPC;
        if (!shared_) {
            SIM_REAL(ftruncate64)(file_, static_cast<off64_t>(buffer_->offset.load()));
        }
    }
    buffer_->used = 0; // first: a run may be stopped between any two of these lines
    buffer_->offset += buffer_->error == 0 ? size : 0;
}

} // namespace sim
