#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace sim {

class TextFile;

/// What stands behind a descriptor that the program holds on a board path. Results: 0 or more, or a
/// negated errno, as a system call gives them inside the kernel.
class OpenFile {
  public:
    explicit OpenFile(std::string path) : path_(std::move(path)) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    virtual ~OpenFile() = default;

    const std::string& Path() const { return path_; }

    /// The flags of the open that made it; they say what the descriptor may be used for.
    void OpenedWith(int flags) { flags_ = flags; }
    int Flags() const { return flags_; }
    bool Readable() const;
    bool Writable() const;
    /// Opened for uncached, completed writes.
    bool Synchronous() const;

    virtual long Read(void* buffer, std::size_t size);
    virtual long Write(const void* data, std::size_t size);
    virtual long Seek(std::int64_t offset, int whence);
    virtual long Control(unsigned long request, void* argument);
    /// The descriptor of the file on this machine that it stands for; negative: none.
    virtual int HostDescriptor() const { return -1; }
    /// Below the mount point, and there on the mounted card.
    virtual bool OfCard() const { return false; }
    virtual bool OnCard() const { return false; }
    /// The file as an attribute; null when it is none.
    virtual TextFile* AsText() { return nullptr; }
    /// Type and permissions as fstat tells them.
    virtual unsigned Mode() const { return S_IFREG | 0644U; }

  private:
    std::string path_;
    int flags_ = 0;
};

/// A file of no known end in which a place can be set, to no effect.
class PlacedFile : public OpenFile {
  public:
    using OpenFile::OpenFile;
    long Seek(std::int64_t offset, int whence) override;

  private:
    std::int64_t place_ = 0;
};

} // namespace sim
