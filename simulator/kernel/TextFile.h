#pragma once

#include "simulator/kernel/EventLog.h"
#include "simulator/kernel/OpenFile.h"
#include "simulator/kernel/SysfsTree.h"

#include <optional>
#include <string>

namespace sim {

/// An open sysfs attribute: its text is made anew when it is read from the start or from where the
/// last read did not end, and each write is one store.
class TextFile : public OpenFile {
  public:
    TextFile(std::string path, SysfsNode node, const SysfsTree& tree, EventLog& events)
        : OpenFile(std::move(path)), node_(std::move(node)), tree_(tree), events_(events) {}

    long Read(void* buffer, std::size_t size) override;
    long Write(const void* data, std::size_t size) override;
    long Seek(std::int64_t offset, int whence) override;

    TextFile* AsText() override { return this; }
    unsigned Mode() const override { return node_.Mode(true); }
    /// The line whose level the attribute is, if it is one's.
    std::optional<unsigned> Line() const { return node_.line; }
    /// The last read made the text anew.
    bool ShownAnew() const { return shownAnew_; }
    bool EverShown() const { return everShown_; }
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
    std::size_t readTo_ = 0; ///< where the last read ended
    bool shownAnew_ = false;
    bool everShown_ = false;
    unsigned seenEdges_ = 0;
};

/// A directory opened for reading: it opens, and reading it fails.
class DirectoryFile : public PlacedFile {
  public:
    using PlacedFile::PlacedFile;
    long Read(void* buffer, std::size_t size) override;
    unsigned Mode() const override { return S_IFDIR | 0755U; }
};

} // namespace sim
