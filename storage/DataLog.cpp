#include "storage/DataLog.h"

#include "base/LocalTime.h"
#include "base/Trace.h"
#include "storage/CardSettings.h"
#include "storage/FileStatus.h"
#include "storage/MountQuery.h"

#include <sys/mount.h>
#include <sys/stat.h>

#include <cstddef>

namespace tavrelin {

namespace {

constexpr const char* kModule = "DataLog";
constexpr std::size_t kTooShortName = 5;

} // namespace

std::string DayLogPath(const std::string& date) {
    return std::string(card::kMountPoint) + "/" + date + "_logfile.csv";
}

DataLog::DataLog() : DataLog(DayLogPath(DateText())) {}

DataLog::DataLog(const std::string& name) {
    if (name.size() > kTooShortName) {
        fileName_ = name;
    }
}

bool DataLog::set_file_name(const std::string& name) {
    fileName_ = name;
    return open();
}

bool DataLog::open() {
    // A file that shows is enough, whatever the card: most records find their day's file.
    FileStatus status(fileName_);
    if (status.is_regular_file(fileName_)) {
        Trace(kModule, "open", __LINE__);
        return OpenForAppending();
    }
    if (MakeFileReachable()) {
        return OpenForAppending();
    }
    Trace(kModule, "open", __LINE__);
    return stream_.is_open();
}

bool DataLog::write(const std::string& record) {
    if (!is_sd_card_present()) {
        return CleanUpAfterRemoval();
    }
    if (!is_sd_card_mounted(card::kMountPoint)) {
        if (!mount_sd_card()) {
            return false;
        }
        // What counts is whether the stream is open, asked below. One that was open already, on a
        // file below the mount point, fails here and swallows the record: better than to log where
        // nobody looks.
        open();
    }
    if (!stream_.is_open()) {
        return false;
    }
    // Whether the card takes it shows at the close: the stream holds the record until then.
    stream_.write(record.data(), static_cast<std::streamsize>(record.size()));
    return true;
}

void DataLog::close() {
    if (stream_.is_open()) {
        stream_.close();
    }
}

bool DataLog::is_sd_card_present() {
    FileStatus card(card::kPresenceDirectory);
    return card.is_directory(card::kPresenceDirectory);
}

bool DataLog::is_sd_card_mounted(const std::string& path) {
    MountQuery query;
    query.SetMountPoint(card::kMountPoint);
    query.SetMountPoint(path);
    return query.IsListed();
}

bool DataLog::mount_sd_card() {
    constexpr const char* operation = "mount_sd_card";
    if (!is_sd_card_present()) {
        Trace(kModule, operation, __LINE__);
        return false;
    }
    if (is_sd_card_mounted(card::kMountPoint)) {
        Trace(kModule, operation, __LINE__);
        return true;
    }
    FileStatus mountPoint(card::kMountPoint);
    if (!mountPoint.is_directory(card::kMountPoint)) {
        Trace(kModule, operation, __LINE__);
        ::mkdir(card::kMountPoint, card::kMountPointMode); // mount tells whether that helped
    }
    Trace(kModule, operation, __LINE__);
    return ::mount(card::kPartition, card::kMountPoint, card::kFileSystem, card::kMountFlags,
                   card::kMountData) == 0;
}

// Asks whether the card is listed, whatever the path: nothing is unmounted that nobody mounted.
bool DataLog::umount_sd_card(const std::string& path) {
    return is_sd_card_mounted(card::kMountPoint) && ::umount(path.c_str()) == 0;
}

// No file of today yet, or the card is not mounted and so the file not visible.
bool DataLog::MakeFileReachable() {
    constexpr const char* operation = "open";
    if (is_sd_card_present()) {
        Trace(kModule, operation, __LINE__);
        return is_sd_card_mounted(card::kMountPoint) || mount_sd_card();
    }
    if (is_sd_card_mounted(card::kMountPoint)) {
        Trace(kModule, operation, __LINE__);
        umount_sd_card(card::kMountPoint);
    }
    return false;
}

// The stream clears its flags when this opens it and sets its failed flag otherwise.
bool DataLog::OpenForAppending() {
    stream_.open(fileName_, std::ios::out | std::ios::app);
    return stream_.is_open();
}

// Fails with EBUSY as long as this object has a file of the card open.
bool DataLog::CleanUpAfterRemoval() {
    MountQuery query;
    query.SetMountPoint(card::kMountPoint);
    return query.IsListed() && umount_sd_card(query.MountPoint());
}

} // namespace tavrelin
