#include "tests/kernel/contract/Contract.h"

// A slot without a card.
const char contract::kNoCard[] = R"(
stat /sys/block/mmcblk0                 -> ENOENT
lstat /sys/block/mmcblk0                -> ENOENT
access /sys/block/mmcblk0 f             -> ENOENT
list /sys/block/mmcblk0 mmcblk0p1       -> ENOENT
d = open /sys/block/mmcblk0 rd          -> ENOENT
stat /dev/mmcblk0                       -> ENOENT
stat /dev/mmcblk0p1                     -> ENOENT
access /dev/mmcblk0p1 f                 -> ENOENT
stat /mnt/sd-card                       -> dir 0755
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync "" -> ENOENT
mount /dev/mmcblk0p1 /mnt/sd-card nofs sync "" -> ENODEV
mount /dev/mmcblk0p1 /mnt/nowhere vfat sync "" -> ENOENT
umount /mnt/sd-card                     -> EINVAL
table /mnt/sd-card                      -> missing
)";

// A card whose first partition holds no FAT file system.
const char contract::kNoFat[] = R"(
stat /sys/block/mmcblk0                 -> dir 0755
stat /dev/mmcblk0p1                     -> blk *
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync "" -> EINVAL
mount /dev/mmcblk0p1 /mnt/sd-card nofs sync "" -> ENODEV
mount /dev/mmcblk0p1 /mnt/nowhere vfat sync "" -> ENOENT
table /mnt/sd-card                      -> missing
umount /mnt/sd-card                     -> EINVAL
)";

// A card without a partition.
const char contract::kNoPartition[] = R"(
stat /sys/block/mmcblk0                 -> dir 0755
list /sys/block/mmcblk0 mmcblk0p1       -> missing
stat /sys/block/mmcblk0/mmcblk0p1       -> ENOENT
stat /dev/mmcblk0                       -> blk *
stat /dev/mmcblk0p1                     -> ENOENT
access /dev/mmcblk0p1 f                 -> ENOENT
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync "" -> ENOENT
mount /dev/mmcblk0 /mnt/sd-card vfat sync "" -> EINVAL
umount /mnt/sd-card                     -> EINVAL
)";

// A card whose lock slider is set.
const char contract::kLocked[] = R"(
stat /dev/mmcblk0p1                     -> blk *
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync "" -> EACCES
table /mnt/sd-card                      -> missing
mount /dev/mmcblk0p1 /mnt/sd-card vfat ro "" -> ok
table /mnt/sd-card                      -> /dev/mmcblk0p1 vfat ro*
d = open /mnt/sd-card/new.txt wr+creat  -> EROFS
mkdir /mnt/sd-card/folder               -> EROFS
umount /mnt/sd-card                     -> ok
)";
