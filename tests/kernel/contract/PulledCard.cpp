#include "tests/kernel/contract/Contract.h"

// A card that is pulled in the second second, while it is mounted and one file of it is open.
const char contract::kPulled[] = R"(
in /mnt/sd-card
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync "" -> ok
stream gone.csv gone                    -> ok
mkdir held                               -> ok
stream held/held.csv held             -> ok
d = open kept.csv rdwr+creat            -> ok
write d kept                            -> 4
h = open held/held.csv rd             -> ok
n = open /sys/class/pwm/pwmchip0/npwm rd -> ok
read n 16                               -> "4\n"
poll n pri 4000                         -> nothing
close n                                 -> ok
stat /sys/block/mmcblk0                 -> ENOENT
list /sys/block mmcblk0                 -> missing
stat /dev/mmcblk0p1                     -> ENOENT
table /mnt/sd-card                      -> /dev/mmcblk0p1 vfat rw,sync*
stat .                                  -> dir 0755
statfs .                                -> EIO

# What nobody had open is gone.
stat gone.csv                           -> ENOENT
access gone.csv r                       -> ENOENT
d2 = open gone.csv rd                   -> ENOENT
d2 = open gone.csv wr+creat+append      -> E*
d2 = open gone.csv wr+trunc             -> ENOENT
stream gone.csv more                    -> no stream
unlink gone.csv                         -> ENOENT
rename gone.csv other.csv               -> ENOENT
truncate gone.csv 0                     -> ENOENT
mkdir other                             -> EIO
list . gone.csv                         -> missing

# What was open stays visible, and takes nothing.
stat kept.csv                           -> file 0755
stat held                             -> dir 0755
stat held/held.csv                    -> file 0755
size kept.csv                           -> 4
write d more                            -> EIO
fstat d                                 -> file 0755
d2 = open kept.csv wr+append            -> ok
write d2 more                           -> EIO
close d2                                -> ok
mkdir kept.csv                          -> EEXIST
rmdir held                              -> ENOENT
rename kept.csv gone.csv                -> ENOENT
unlink held/held.csv                    -> ENOENT
truncate kept.csv 0                     -> ok
size kept.csv                           -> 0
ftruncate d 0                           -> ok
d2 = open kept.csv wr+trunc             -> ok
close d2                                -> ok
umount /mnt/sd-card                     -> EBUSY
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync "" -> ENOENT
close h                                 -> ok
umount /mnt/sd-card                     -> EBUSY
close d                                 -> ok
umount /mnt/sd-card                     -> ok
stat kept.csv                           -> ENOENT
)";
