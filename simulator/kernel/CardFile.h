#pragma once

#include "simulator/board/CardSlot.h"
#include "simulator/kernel/EventLog.h"
#include "simulator/kernel/OpenFile.h"

#include <string>

namespace sim {

/// A file below the mount point: its bytes live in a file on this machine, and the card decides
/// whether they get there.
class CardFile : public OpenFile {
  public:
    /// onCard: it lies on the mounted card, else on the root file system below the mount point.
    CardFile(std::string path, std::string hostPath, bool onCard, CardSlot& card, EventLog& events)
        : OpenFile(std::move(path)), hostPath_(std::move(hostPath)), onCard_(onCard), card_(card),
          events_(events) {
        if (onCard_) {
            card_.OpenFile(hostPath_);
        }
    }
    CardFile(const CardFile&) = delete;
    CardFile& operator=(const CardFile&) = delete;
    ~CardFile() override;

    /// Opens the file on this machine; 0 or a negated errno.
    long OpenHost(int flags, unsigned mode);

    long Read(void* buffer, std::size_t size) override;
    long Write(const void* data, std::size_t size) override;
    long Seek(std::int64_t offset, int whence) override;
    int HostDescriptor() const override { return host_; }
    const std::string& HostPath() const { return hostPath_; }
    bool OfCard() const override { return true; }
    bool OnCard() const override { return onCard_; }

  private:
    std::string hostPath_;
    bool onCard_;
    CardSlot& card_;
    EventLog& events_;
    int host_ = -1;
    bool writes_ = false;
};

} // namespace sim
