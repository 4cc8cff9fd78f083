#include "simulator/kernel/FileTable.h"

#include "simulator/libc/Real.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace sim {

FileTable::~FileTable() {
    for (std::size_t number = 0; number < files_.size(); ++number) {
        Remove(static_cast<int>(number));
    }
    GiveBack();
    if (source_ >= 0) {
        real::CloseOwn(source_);
    }
}

int FileTable::Source() {
    if (source_ < 0) {
        source_ = real::MakeOwn(real::open("/dev/null", O_RDWR | O_CLOEXEC));
    }
    return source_;
}

int FileTable::Reserve(int least) {
    const auto found = std::min_element(spare_.begin(), spare_.end());
    if (least == 0 && found != spare_.end()) {
        const int number = *found;
        spare_.erase(found);
        return number;
    }
    GiveBack();
    const int number = SIM_REAL(fcntl64)(Source(), F_DUPFD_CLOEXEC, least);
    return number < 0 ? -errno : number;
}

int FileTable::ReserveAt(int descriptor) {
    Remove(descriptor);
    GiveBack();
    return SIM_REAL(dup3)(Source(), descriptor, O_CLOEXEC) < 0 ? -errno : 0;
}

void FileTable::Put(int descriptor, std::shared_ptr<OpenFile> file) {
    const auto index = static_cast<std::size_t>(descriptor);
    files_.resize(std::max(files_.size(), index + 1));
    files_[index] = std::move(file);
    ++count_;
}

void FileTable::GiveBack() {
    for (const int number : spare_) {
        real::close(number);
    }
    spare_.clear();
}

OpenFile* FileTable::Find(int descriptor) const {
    const auto index = static_cast<std::size_t>(descriptor);
    return index < files_.size() ? files_[index].get() : nullptr;
}

std::shared_ptr<OpenFile> FileTable::Share(int descriptor) const {
    return files_.at(static_cast<std::size_t>(descriptor));
}

void FileTable::Remove(int descriptor) {
    if (Find(descriptor) != nullptr) {
        files_[static_cast<std::size_t>(descriptor)].reset();
        --count_;
        Free(descriptor);
    }
}

bool FileTable::CardFileOpen() const {
    return std::ranges::any_of(files_, [](const auto& file) { return file && file->OnCard(); });
}

} // namespace sim
