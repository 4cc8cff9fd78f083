#pragma once

#include <fstream>
#include <string>

namespace tavrelin {

/// Full path of a day's log on the SD card: /mnt/sd-card/2026-03-07_logfile.csv.
std::string DayLogPath(const std::string& date);

/// The day's log file on the SD card, for one batch of whole records: construct with the file's
/// name, open, write, close. Mounts the card when it is needed, and looks at card and mount table
/// anew at every step. Prints nothing, retries nothing, locks nothing: each writer has an object of
/// its own, and all append.
class DataLog {
  public:
    /// Names today's log.
    DataLog();
    /// A name of 5 characters or fewer is not kept; open then fails.
    explicit DataLog(const std::string& name);

    /// Replaces the name and opens.
    bool set_file_name(const std::string& name);

    /// Opens the file for appending and creates it when missing, the card being there and, after
    /// this, mounted. With the card gone, unmounts what is still listed. Answers whether the stream
    /// is open. An open stream is not opened again: that marks it failed, and it swallows what is
    /// written.
    bool open();

    /// Hands a whole record, newline included, to the stream, mounting the card when it is not
    /// mounted. True when handed over, which a full or broken card does not change. Without a card
    /// true only says that a mount left behind was cleaned up; the record is lost either way.
    bool write(const std::string& record);

    /// Everything written is on the card when this returns. Does nothing on a stream that is not
    /// open.
    void close();

    /// The stream's failed flag.
    [[nodiscard]] bool Failed() const { return stream_.fail(); }
    [[nodiscard]] const std::string& FileName() const { return fileName_; }

    /// Whether a card is in the slot.
    static bool is_sd_card_present();
    /// Whether the mount table lists the path; an empty one asks about the card's mount point.
    static bool is_sd_card_mounted(const std::string& path = "");
    /// Mounts the card unless it is mounted, creating the mount point when missing; true when it is
    /// mounted afterwards.
    static bool mount_sd_card();
    /// Unmounts the path if the card is listed as mounted; true when that succeeded.
    static bool umount_sd_card(const std::string& path);

  private:
    static bool MakeFileReachable();
    bool OpenForAppending();
    static bool CleanUpAfterRemoval();

    std::string fileName_;
    std::ofstream stream_;
};

} // namespace tavrelin
