#include "simulator/kernel/FileTable.h"

#include <algorithm>

namespace sim {

int FileTable::add(std::unique_ptr<OpenFile> file) {
    auto slot = std::find(files_.begin(), files_.end(), nullptr);
    if (slot == files_.end()) {
        slot = files_.insert(files_.end(), nullptr);
    }
    *slot = std::move(file);
    ++count_;
    return firstNumber + static_cast<int>(slot - files_.begin());
}

void FileTable::addAt(int descriptor, std::unique_ptr<OpenFile> file) {
    streams_[descriptor] = std::move(file);
}

OpenFile* FileTable::find(int descriptor) const {
    if (descriptor >= firstNumber) {
        const auto index = static_cast<std::size_t>(descriptor - firstNumber);
        return index < files_.size() ? files_[index].get() : nullptr;
    }
    if (streams_.empty()) {
        return nullptr;
    }
    const auto found = streams_.find(descriptor);
    return found != streams_.end() ? found->second.get() : nullptr;
}

std::unique_ptr<OpenFile> FileTable::remove(int descriptor) {
    std::unique_ptr<OpenFile> file;
    if (descriptor >= firstNumber) {
        const auto index = static_cast<std::size_t>(descriptor - firstNumber);
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
