#pragma once

#include "simulator/kernel/OpenFile.h"

#include <memory>
#include <vector>

namespace sim {

/// The program's descriptors on board paths. Their numbers are those that a kernel gives: each is
/// held on this machine too, by one of a file that does nothing.
class FileTable {
  public:
    FileTable() = default;
    FileTable(const FileTable&) = delete;
    FileTable& operator=(const FileTable&) = delete;
    ~FileTable();

    /// The lowest free number from some number on, for a file to come; a negated errno when the
    /// process may have no more.
    int Reserve(int least = 0);
    /// Makes a number, whatever stands there, one for a file to come; 0 or a negated errno.
    int ReserveAt(int descriptor);
    void Put(int descriptor, std::shared_ptr<OpenFile> file);
    /// A reserved number is not needed.
    void Free(int descriptor) { spare_.push_back(descriptor); }
    /// The program's other descriptors are about to change: no number is kept from them.
    void GiveBack();

    OpenFile* Find(int descriptor) const;
    std::shared_ptr<OpenFile> Share(int descriptor) const;
    void Remove(int descriptor);
    std::size_t Size() const { return count_; }

    /// True while a file of the mounted card is open.
    bool CardFileOpen() const;

  private:
    int Source();

    std::vector<std::shared_ptr<OpenFile>> files_; ///< by number
    std::size_t count_ = 0;
    std::vector<int> spare_; ///< numbers that are held for files to come
    int source_ = -1;        ///< what holds a number is a duplicate of it
};

} // namespace sim
