#pragma once

#include <unistd.h>

namespace tavrelin {

/// Owns an open descriptor and closes it at the end of its scope; -1 stands for none.
class FileDescriptor {
  public:
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    FileDescriptor(FileDescriptor&&) = delete;
    FileDescriptor& operator=(FileDescriptor&&) = delete;
    ~FileDescriptor() {
        if (IsOpen()) {
            ::close(descriptor_);
        }
    }

    [[nodiscard]] bool IsOpen() const { return descriptor_ >= 0; }
    [[nodiscard]] int Get() const { return descriptor_; }

    /// Gives the descriptor up without closing it.
    [[nodiscard]] int Release() {
        const int descriptor = descriptor_;
        descriptor_ = -1;
        return descriptor;
    }

  private:
    int descriptor_;
};

} // namespace tavrelin
