#pragma once

#include "simulator/kernel/OpenFile.h"

#include <map>
#include <memory>
#include <vector>

namespace sim {

/// The program's descriptors on board paths. Most have numbers of their own, far above those that
/// this machine's kernel gives; a file that a stream holds keeps the number that the stream has.
class FileTable {
  public:
    static constexpr int kFirstNumber = 1 << 20;

    /// Gives the lowest free number of our own.
    int Add(std::unique_ptr<OpenFile> file);
    void AddAt(int descriptor, std::unique_ptr<OpenFile> file);
    OpenFile* Find(int descriptor) const;
    std::unique_ptr<OpenFile> Remove(int descriptor);
    std::size_t Size() const { return count_ + streams_.size(); }

    /// True while a file of the mounted card is open.
    bool CardFileOpen() const;

  private:
    std::vector<std::unique_ptr<OpenFile>> files_;
    std::size_t count_ = 0;
    std::map<int, std::unique_ptr<OpenFile>> streams_;
};

} // namespace sim
