#include "tests/kernel/contract/Contract.h"

// The card's devices, mounting and unmounting it. The slot holds a card with a FAT partition;
// nothing is mounted.
const char contract::kCard[] = R"(
stat /sys/block/mmcblk0                 -> dir 0755
lstat /sys/block/mmcblk0                -> link 0777
access /sys/block/mmcblk0 f             -> ok
access /sys/block/mmcblk0/nothing f     -> ENOENT
list /sys/block/mmcblk0 mmcblk0p1       -> there
stat /sys/block/mmcblk0/mmcblk0p1       -> dir 0755
d = open /sys/block/mmcblk0 rd          -> ok
read d 16                               -> EISDIR
close d                                 -> ok
d = open /sys/block/mmcblk0/nothing wr+creat -> EACCES
unlink /sys/block/mmcblk0               -> EPERM
stat /dev/mmcblk0                       -> blk *
stat /dev/mmcblk0p1                     -> blk *
lstat /dev/mmcblk0p1                    -> blk *
access /dev/mmcblk0p1 f                 -> ok
access /dev/mmcblk0p1 x                 -> EACCES
stat /dev/mmcblk0p1/below               -> ENOTDIR
list /dev/mmcblk0p1 below               -> ENOTDIR
truncate /dev/mmcblk0p1 0               -> EINVAL
stat /mnt/sd-card                       -> dir 0755
statfs /mnt/sd-card                     -> ok
statfs /mnt/nowhere                     -> ENOENT
statfs /                                -> ok
statfs /proc                            -> ok
statfs /dev/mmcblk0p1                   -> ok
access /etc/mtab r                      -> ok
stat /etc/mtab                          -> file 0444
table /mnt/sd-card                      -> missing

# What is wrong is found in this order: target, type, source, content.
umount /mnt/sd-card                     -> EINVAL
umount /mnt/nowhere                     -> ENOENT
umount /dev/mmcblk0p1                   -> EINVAL
mount /dev/mmcblk0p1 /mnt/nowhere vfat sync "" -> ENOENT
mount /dev/mmcblk0p1 /mnt/nowhere nofs sync "" -> ENOENT
mount /dev/nothing /mnt/nowhere nofs sync "" -> ENOENT
mount /dev/mmcblk0p1 /mnt/sd-card nofs sync "" -> ENODEV
mount /dev/nothing /mnt/sd-card nofs sync "" -> ENODEV
mount /dev/mmcblk0p1 /mnt/sd-card "" sync "" -> ENODEV
mount /dev/mmcblk0p1 /mnt/sd-card null sync "" -> EINVAL
mount /dev/mmcblk0p2 /mnt/sd-card vfat sync "" -> ENOENT
mount /dev/nothing /mnt/sd-card vfat sync "" -> ENOENT
mount "" /mnt/sd-card vfat sync ""      -> EINVAL
mount null /mnt/sd-card vfat sync ""    -> EINVAL
mount /dev/spidev32765.1 /mnt/sd-card vfat sync "" -> ENOTBLK
mount /mnt/sd-card /mnt/sd-card vfat sync "" -> ENOTBLK
mount /dev/mmcblk0p1/below /mnt/sd-card vfat sync "" -> ENOTDIR
mount /dev/mmcblk0 /mnt/sd-card vfat sync "" -> EINVAL
mount /dev/mmcblk0p1 /dev/mem vfat sync "" -> ENOTDIR
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync nonsense -> EINVAL
table /mnt/sd-card                      -> missing

# What is written below the mount point before lies on the root file system, and comes to light again.
store /mnt/sd-card/below.txt 1          -> open: ENOENT
stream /mnt/sd-card/below.txt hidden    -> ok
show /mnt/sd-card/below.txt             -> "hidden"
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync "" -> ok
show /mnt/sd-card/below.txt             -> open: ENOENT
stat /mnt/sd-card                       -> dir 0755
table /mnt/sd-card                      -> /dev/mmcblk0p1 vfat rw,sync,relatime,fmask=0022,dmask=0022*
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync "" -> EBUSY
mount /dev/mmcblk0 /mnt/sd-card vfat sync "" -> EBUSY
mount /dev/mmcblk0p1 /mnt/sd-card vfat ro "" -> EBUSY
statfs /mnt/sd-card                     -> ok
statfs /mnt/sd-card/below.txt           -> ENOENT
rmdir /mnt/sd-card                      -> EBUSY
rename /mnt/sd-card /mnt/nowhere        -> EBUSY
mkdir /mnt/sd-card                      -> EEXIST
unlink /mnt/sd-card                     -> EISDIR

# A file that is open keeps it there.
d = open /mnt/sd-card/open.txt wr+creat -> ok
umount /mnt/sd-card                     -> EBUSY
close d                                 -> ok
d = open /mnt/sd-card/open.txt rd       -> ok
umount /mnt/sd-card                     -> EBUSY
close d                                 -> ok
d = open /mnt/sd-card rd                -> ok
umount /mnt/sd-card                     -> EBUSY
close d                                 -> ok
unlink /mnt/sd-card/open.txt            -> ok
umount /mnt/sd-card                     -> ok
table /mnt/sd-card                      -> missing
umount /mnt/sd-card                     -> EINVAL
show /mnt/sd-card/below.txt             -> "hidden"
unlink /mnt/sd-card/below.txt           -> ok

# For reading only.
mount /dev/mmcblk0p1 /mnt/sd-card vfat ro "" -> ok
table /mnt/sd-card                      -> /dev/mmcblk0p1 vfat ro,relatime*
d = open /mnt/sd-card/new.txt wr+creat  -> EROFS
d = open /mnt/sd-card/new.txt rd        -> ENOENT
mkdir /mnt/sd-card/folder               -> EROFS
access /mnt/sd-card w                   -> EROFS
access /mnt/sd-card r+x                 -> ok
unlink /mnt/sd-card/new.txt             -> EROFS
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync "" -> EBUSY

# Mounted anew where it is. The options are not looked at.
mount null /mnt/sd-card null remount nonsense -> ok
table /mnt/sd-card                      -> /dev/mmcblk0p1 vfat rw,relatime*
d = open /mnt/sd-card/new.txt wr+creat  -> ok
mount null /mnt/sd-card null remount+ro "" -> EBUSY
close d                                 -> ok
mount null /mnt/sd-card null remount+ro "" -> ok
table /mnt/sd-card                      -> /dev/mmcblk0p1 vfat ro,relatime*
unlink /mnt/sd-card/new.txt             -> EROFS
mount null /mnt/sd-card null remount+sync "" -> ok
table /mnt/sd-card                      -> /dev/mmcblk0p1 vfat rw,sync,relatime*
unlink /mnt/sd-card/new.txt             -> ok
mkdir /mnt/sd-card/folder               -> ok
mount null /mnt/sd-card/folder null remount "" -> EINVAL
type /mnt/sd-card                       -> vfat
type /mnt/sd-card/folder                -> vfat
statfs /mnt/sd-card/nothing             -> ENOENT
same /mnt/sd-card /mnt/sd-card/         -> same
same /mnt/sd-card /mnt/sd-card/folder   -> another
rmdir /mnt/sd-card/folder               -> ok
umount /mnt/sd-card                     -> ok
mount null /mnt/sd-card null remount "" -> EINVAL
mount null /mnt/nowhere null remount "" -> ENOENT
mount /mnt/nothing /mnt/sd-card null bind "" -> ENOENT
mount null /mnt/sd-card null bind ""    -> EINVAL
mount /dev/mmcblk0p1 /mnt/sd-card null bind "" -> ENOTDIR

# The options are looked at when the rest is right.
mount /dev/mmcblk0p1 /mnt/sd-card vfat none "" -> ok
table /mnt/sd-card                      -> /dev/mmcblk0p1 vfat rw,relatime*
mount /dev/mmcblk0p1 /mnt/sd-card vfat none nonsense -> EBUSY
umount /mnt/sd-card                     -> ok
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync quiet,shortname=mixed -> ok
umount /mnt/sd-card                     -> ok
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync quiet,nonsense=1 -> EINVAL
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync+nosuid+noexec+noatime "" -> ok
table /mnt/sd-card                      -> /dev/mmcblk0p1 vfat rw,sync,nosuid,noexec,noatime,fmask=0022*
umount /mnt/sd-card                     -> ok
mount /dev/mmcblk0p1 /mnt/sd-card/ vfat sync "" -> ok
umount /mnt/sd-card/                    -> ok
)";
