#include "simulator/kernel/TextFile.h"

#include "simulator/scenario/ErrnoNames.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace sim {

bool TextFile::gone() const {
    const SysfsNode now = tree_.find(path());
    return now.kind == SysfsNode::Kind::missing || now.instance != node_.instance;
}

long TextFile::read(void* buffer, std::size_t size) {
    if (gone()) {
        events_.add("read", path(), "ENODEV");
        return -ENODEV;
    }
    if (offset_ == 0 || !shown_) {
        text_ = node_.show();
        shown_ = true;
        events_.add("read", path(), EventLog::quoted(text_));
    }
    const std::size_t from = std::min(offset_, text_.size());
    const std::size_t count = std::min(size, text_.size() - from);
    std::memcpy(buffer, text_.data() + from, count);
    offset_ = from + count;
    return static_cast<long>(count);
}

long TextFile::write(const void* data, std::size_t size) {
    if (size == 0) {
        return 0; // no store is made of nothing
    }
    const std::string text(static_cast<const char*>(data), size);
    const int error = gone() ? ENODEV : node_.store(text);
    events_.add("write", path(),
                EventLog::quoted(text) + (error != 0 ? " " + errnoName(error) : std::string()));
    return error != 0 ? -error : static_cast<long>(size);
}

long TextFile::seek(std::int64_t offset, int whence) {
    const std::int64_t target =
        offset + (whence == SEEK_CUR ? static_cast<std::int64_t>(offset_) : 0);
    if ((whence != SEEK_SET && whence != SEEK_CUR) || target < 0) {
        return -EINVAL;
    }
    offset_ = static_cast<std::size_t>(target);
    return static_cast<long>(target);
}

long DirectoryFile::read(void* /*buffer*/, std::size_t /*size*/) {
    return -EISDIR;
}

} // namespace sim
