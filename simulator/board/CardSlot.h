#pragma once

#include "simulator/board/Nanoseconds.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace sim {

/// The card and its slot, as a scenario sets them and as they stand from then on.
struct CardState {
    bool present = true;         ///< a card is in the slot
    bool mounted = false;        ///< at the mount point, even when it was pulled since
    bool partitioned = true;     ///< it has a first partition
    bool fat = true;             ///< with a FAT file system
    bool writeProtected = false; ///< the lock slider: the block device is read-only
    bool readOnly = false;       ///< the file system refuses writers
    bool synchronous = true;     ///< mounted so that a write is on the card when it returns
    bool vfatSupported = true;   ///< the kernel has vfat
    bool mountPointExists = true;
    std::int64_t freeBytes = -1; ///< space left; negative: no limit
};

/// The SD card slot: a card or none, and what the kernel makes of it. Results are 0 or an errno, as
/// the kernel gives them with a card that was pulled, put back, filled or locked.
class CardSlot : public CardState {
  public:
    /// How long the kernel lists a card that has been pulled.
    static constexpr Nanoseconds kRemovalNoticed = Milliseconds(700);

    explicit CardSlot(const CardState& start) : CardState(start) {}

    void Insert() { present = true; }
    void Remove(Nanoseconds now);
    /// The kernel notices a removal that is long enough ago: of a mounted card, all goes with it
    /// but what is open.
    void NoticeRemoval(Nanoseconds now);

    /// True while "/sys/block/mmcblk0" is there.
    bool Listed(Nanoseconds now) const;
    /// A file of the mounted card is opened or closed.
    void OpenFile(const std::string& name) { open_.insert(name); }
    void CloseFile(const std::string& name) { open_.extract(name); }
    /// A write met a card that was pulled: the file stays, as one that is open does.
    void KeepFile(const std::string& name) { kept_.insert(name); }
    /// A file of a card that was pulled gets another size, which never reaches the card.
    void CutFile(const std::string& name, std::int64_t size) { cut_[name] = size; }
    /// Its size, which is another one on the card.
    std::int64_t SizeOf(const std::string& name, std::int64_t onCard) const {
        const auto cut = cut_.find(name);
        return cut != cut_.end() ? cut->second : onCard;
    }
    /// Counts files of it that are open for writing.
    void AddWriters(int count) { writers_ += count; }
    /// The card of this mount was pulled, and the kernel has noticed.
    bool Gone() const { return gone_; }
    /// False for a file or folder of the mounted card that went with it.
    bool Shows(std::string_view name) const;
    /// Mounted, and the card of that mount was never pulled since.
    bool Healthy() const { return mounted && present && !stale_; }

    int Mount(bool forReadingOnly);
    int Unmount(bool filesOpen);
    /// Changes whether a mounted card may be written to.
    int Remount(bool forReadingOnly);
    /// True while the mount or the file system itself refuses writers.
    bool RefusesWriters() const { return readOnly || mountedForReading_; }

    /// 0 or the errno of creating a file on the mounted card.
    int CreateFile() const;
    /// 0 or the errno of opening an existing file for writing.
    int OpenForWriting() const;
    /// Takes the space of a write as a whole or not at all: 0, EIO on a pulled card, ENOSPC on a
    /// full one.
    int Write(std::int64_t bytes);
    /// Bytes that the card took since the start.
    std::int64_t Written() const { return written_; }

  private:
    bool mountedForReading_ = false;
    bool stale_ = false; ///< the card was pulled while it was mounted
    bool gone_ = false;  ///< and the kernel has noticed
    std::multiset<std::string> open_;
    std::set<std::string> kept_; ///< what stays visible then
    std::map<std::string, std::int64_t> cut_;
    int writers_ = 0;
    std::int64_t written_ = 0;
    Nanoseconds removedAt_ = -kRemovalNoticed;
};

} // namespace sim
