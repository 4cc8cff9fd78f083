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
    shownAnew_ = false;
    if (const int error = Gone() ? ENODEV : node_.showError; error != 0) {
        events_.Add("read", Path(), ErrnoName(error));
        return -error;
    }
    if (offset_ == 0 || offset_ != readTo_) {
        text_ = node_.show();
        shownAnew_ = everShown_ = true;
        events_.Add("read", Path(), [this] { return EventLog::Quoted(text_); });
    }
    const std::size_t from = std::min(offset_, text_.size());
    const std::size_t count = std::min(size, text_.size() - from);
    std::memcpy(buffer, text_.data() + from, count);
    offset_ += count;
    readTo_ = offset_;
    return static_cast<long>(count);
}

long TextFile::Write(const void* data, std::size_t size) {
    const bool gone = Gone();
    if (size == 0 && !gone) {
        return 0; // no store is made of nothing
    }
    const std::string text(static_cast<const char*>(data), size);
    const int error = gone ? ENODEV : node_.store(text);
    events_.Add("write", Path(), [&] {
        return EventLog::Quoted(text) + (error != 0 ? " " + ErrnoName(error) : std::string());
    });
    if (error != 0) {
        return -error;
    }
    offset_ += size;
    return static_cast<long>(size);
}

long TextFile::Seek(std::int64_t offset, int whence) {
    const std::int64_t from = whence == SEEK_CUR   ? static_cast<std::int64_t>(offset_)
                              : whence == SEEK_END ? kAttributeSize
                                                   : 0;
    if (whence > SEEK_END || from + offset < 0) {
        return -EINVAL;
    }
    offset_ = static_cast<std::size_t>(from + offset);
    return static_cast<long>(from + offset);
}

long DirectoryFile::Read(void* /*buffer*/, std::size_t /*size*/) {
    return -EISDIR;
}

} // namespace sim
