#pragma once

#include "simulator/kernel/EventLog.h"
#include "simulator/kernel/OpenFile.h"
#include "simulator/kernel/SysfsTree.h"

#include <optional>
#include <string>

namespace sim {

/// An open sysfs attribute: its text is made anew when it is read from the start, and each write is
/// one store.
class TextFile : public OpenFile {
  public:
    TextFile(std::string path, SysfsNode node, const SysfsTree& tree, EventLog& events)
        : OpenFile(std::move(path)), node_(std::move(node)), tree_(tree), events_(events) {}

    long Read(void* buffer, std::size_t size) override;
    long Write(const void* data, std::size_t size) override;
    long Seek(std::int64_t offset, int whence) override;

    TextFile* AsLevel() override { return node_.line ? this : nullptr; }
    /// The line whose level the attribute is, if it is one's.
    std::optional<unsigned> Line() const { return node_.line; }
    /// The next read makes the text anew.
    bool AtStart() const { return offset_ == 0; }
    /// True once what it belongs to was given back, whether or not it was exported again since.
    bool Gone() const;
    /// How many edges of its line had come when it was last read; none before the first read.
    unsigned SeenEdges() const { return seenEdges_; }
    void SawEdges(unsigned edges) { seenEdges_ = edges; }

  private:
    SysfsNode node_;
    const SysfsTree& tree_;
    EventLog& events_;
    std::string text_;
    std::size_t offset_ = 0;
    bool shown_ = false;
    unsigned seenEdges_ = 0;
};

/// A directory opened for reading: it opens, and reading it fails.
class DirectoryFile : public OpenFile {
  public:
    using OpenFile::OpenFile;
    long Read(void* buffer, std::size_t size) override;
    unsigned Mode() const override { return S_IFDIR | 0755U; }
};

} // namespace sim
