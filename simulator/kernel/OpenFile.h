#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace sim {

/// What stands behind a descriptor that the program holds on a board path. Results: 0 or more, or a
/// negated errno, as a system call gives them inside the kernel.
class OpenFile {
  public:
    explicit OpenFile(std::string path) : path_(std::move(path)) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    virtual ~OpenFile() = default;

    const std::string& path() const { return path_; }

    /// The flags of the open that made it; they say what the descriptor may be used for.
    void openedWith(int flags) { flags_ = flags; }
    bool readable() const;
    bool writable() const;
    /// Opened for uncached, completed writes.
    bool synchronous() const;

    virtual long read(void* buffer, std::size_t size);
    virtual long write(const void* data, std::size_t size);
    virtual long seek(std::int64_t offset, int whence);
    virtual long control(unsigned long request, void* argument);
    /// The descriptor of the file on this machine that it stands for; negative: none.
    virtual int hostDescriptor() const { return -1; }
    /// Type and permissions as fstat tells them.
    virtual unsigned mode() const { return S_IFREG | 0644U; }

  private:
    std::string path_;
    int flags_ = 0;
};

} // namespace sim
