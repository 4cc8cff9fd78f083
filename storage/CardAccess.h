#pragma once

namespace tavrelin {

// The SD card as the application sees it. Only the question whether it is mounted is asked while
// the instrument runs; mounting and unmounting are left to the data log.

/// Whether a card is in the slot.
bool IsCardPresent();

/// Whether the mount table lists the card's mount point.
bool IsCardMounted();

/// Mounts the card unless it is mounted; never creates the mount point. True when it is mounted
/// afterwards.
bool MountCard();

/// Unmounts what the mount table does not list; a listed card is left alone. True when the kernel
/// unmounted something.
bool UnmountCard();

} // namespace tavrelin
