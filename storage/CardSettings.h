#pragma once

#include <sys/mount.h>
#include <sys/types.h>

/// Where the SD card is found and how it is mounted.
namespace tavrelin::card {

/// The whole card in sysfs: there while a card is in the slot.
inline constexpr const char* kPresenceDirectory = "/sys/block/mmcblk0";
inline constexpr const char* kPartition = "/dev/mmcblk0p1";
inline constexpr const char* kMountPoint = "/mnt/sd-card";
inline constexpr const char* kFileSystem = "vfat";
/// Synchronous writes: what is in the file when it is closed is on the card.
inline constexpr unsigned long kMountFlags = MS_SYNCHRONOUS;
inline constexpr const char* kMountData = "";
/// Mode of a mount point that has to be created.
inline constexpr mode_t kMountPointMode = 0700;

} // namespace tavrelin::card
