#include "simulator/kernel/FileTable.h"

#include <algorithm>

namespace sim {

int FileTable::Add(std::unique_ptr<OpenFile> file) {
    auto slot = std::find(files_.begin(), files_.end(), nullptr);
    if (slot == files_.end()) {
        slot = files_.insert(files_.end(), nullptr);
    }
    *slot = std::move(file);
    ++count_;
    return kFirstNumber + static_cast<int>(slot - files_.begin());
}

void FileTable::AddAt(int descriptor, std::unique_ptr<OpenFile> file) {
    streams_[descriptor] = std::move(file);
}

OpenFile* FileTable::Find(int descriptor) const {
    if (descriptor >= kFirstNumber) {
        const auto index = static_cast<std::size_t>(descriptor - kFirstNumber);
        return index < files_.size() ? files_[index].get() : nullptr;
    }
    if (streams_.empty()) {
        return nullptr;
    }
    const auto found = streams_.find(descriptor);
    return found != streams_.end() ? found->second.get() : nullptr;
}

bool FileTable::CardFileOpen() const {
    return std::ranges::any_of(files_, [](const auto& file) { return file && file->OnCard(); }) ||
           std::ranges::any_of(streams_, [](const auto& entry) { return entry.second->OnCard(); });
}

std::unique_ptr<OpenFile> FileTable::Remove(int descriptor) {
    std::unique_ptr<OpenFile> file;
    if (descriptor >= kFirstNumber) {
        const auto index = static_cast<std::size_t>(descriptor - kFirstNumber);
        if (index < files_.size() && files_[index]) {
            file = std::move(files_[index]);
            --count_;
        }
    } else if (const auto found = streams_.find(descriptor); found != streams_.end()) {
        file = std::move(found->second);
        streams_.erase(found);
    }
    return file;
}

} // namespace sim
