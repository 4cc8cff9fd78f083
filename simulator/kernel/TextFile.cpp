#include "simulator/kernel/TextFile.h"

#include "simulator/kernel/ErrnoNames.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace sim {

bool TextFile::Gone() const {
    const SysfsNode now = tree_.Find(Path());
    return now.kind == SysfsNode::Kind::Missing || now.instance != node_.instance;
}

long TextFile::Read(void* buffer, std::size_t size) {
    if (Gone()) {
        events_.Add("read", Path(), "ENODEV");
        return -ENODEV;
    }
    if (offset_ == 0 || !shown_) {
        text_ = node_.show();
        shown_ = true;
        events_.Add("read", Path(), EventLog::Quoted(text_));
    }
    const std::size_t from = std::min(offset_, text_.size());
    const std::size_t count = std::min(size, text_.size() - from);
    std::memcpy(buffer, text_.data() + from, count);
    offset_ = from + count;
    return static_cast<long>(count);
}

long TextFile::Write(const void* data, std::size_t size) {
    if (size == 0) {
        return 0; // no store is made of nothing
    }
    const std::string text(static_cast<const char*>(data), size);
    const int error = Gone() ? ENODEV : node_.store(text);
    events_.Add("write", Path(),
                EventLog::Quoted(text) + (error != 0 ? " " + ErrnoName(error) : std::string()));
    return error != 0 ? -error : static_cast<long>(size);
}

long TextFile::Seek(std::int64_t offset, int whence) {
    const std::int64_t target =
        offset + (whence == SEEK_CUR ? static_cast<std::int64_t>(offset_) : 0);
    if ((whence != SEEK_SET && whence != SEEK_CUR) || target < 0) {
        return -EINVAL;
    }
    offset_ = static_cast<std::size_t>(target);
    return static_cast<long>(target);
}

long DirectoryFile::Read(void* /*buffer*/, std::size_t /*size*/) {
    return -EISDIR;
}

} // namespace sim
