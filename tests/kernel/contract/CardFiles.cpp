#include "tests/kernel/contract/Contract.h"

// The files of a mounted card. None of the names is on it before.
const char contract::kCardFiles[] = R"(
in /mnt/sd-card
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync "" -> ok

# A new file, with the permissions that the mount gives.
stat day.csv                            -> ENOENT
access day.csv f                        -> ENOENT
d = open day.csv rd                     -> ENOENT
d = open day.csv wr                     -> ENOENT
d = open day.csv wr+append              -> ENOENT
d = open folder/day.csv wr+creat        -> ENOENT
d = open day.csv wr+creat+append        -> ok
write d first                           -> 5
fstat d                                 -> file 0755
read d 16                               -> EBADF
lseek d 0 cur                           -> 5
close d                                 -> ok
stat day.csv                            -> file 0755
lstat day.csv                           -> file 0755
size day.csv                            -> 5
access day.csv r+w+x                    -> ok
list . day.csv                          -> there
list . night.csv                        -> missing
list day.csv below                      -> ENOTDIR
stat day.csv/below                      -> ENOTDIR
d = open day.csv/below wr+creat         -> ENOTDIR
d = open day.csv wr+creat+excl          -> EEXIST
d = open day.csv rd+dir                 -> ENOTDIR
readlink day.csv                        -> EINVAL
mkdir day.csv                           -> EEXIST
rmdir day.csv                           -> ENOTDIR

# Places in it.
d = open day.csv rdwr+append            -> ok
read d 3                                -> "fir"
write d ",second"                       -> 7
lseek d 0 cur                           -> 12
lseek d 0 set                           -> 0
read d 64                               -> "first,second"
read d 64                               -> ""
lseek d -6 end                          -> 6
read d 64                               -> "second"
pread d 5 0                             -> "first"
pread d 5 100                           -> ""
pread d 5 -1                            -> EINVAL
lseek d 100 set                         -> 100
read d 5                                -> ""
lseek d -1 set                          -> EINVAL
poll d in+out 0                         -> in+out
poll d pri 0                            -> nothing
ioctl d 0x5401 0                        -> ENOTTY
close d                                 -> ok
d = open day.csv rdwr                   -> ok
pwrite d F 0                            -> 1
pwrite d S 6                            -> 1
lseek d 0 cur                           -> 0
read d 64                               -> "First,Second"
ftruncate d 5                           -> ok
lseek d 0 end                           -> 5
ftruncate d -1                          -> EINVAL
close d                                 -> ok
size day.csv                            -> 5
truncate day.csv 7                      -> ok
show day.csv                            -> "First\x00\x00"
truncate day.csv 3                      -> ok
show day.csv                            -> "Fir"
truncate night.csv 0                    -> ENOENT
d = open day.csv wr+trunc               -> ok
close d                                 -> ok
size day.csv                            -> 0
stream day.csv "again\n"                -> ok
show day.csv                            -> "again\n"
store day.csv A                         -> ok
show day.csv                            -> "Again\n"
d = open day.csv rd                     -> ok
write d 1                               -> EBADF
ftruncate d 0                           -> EINVAL
close d                                 -> ok

# Names.
rename day.csv night.csv                -> ok
stat day.csv                            -> ENOENT
show night.csv                          -> "Again\n"
rename day.csv other.csv                -> ENOENT
stream other.csv other                  -> ok
rename night.csv other.csv              -> ok
show other.csv                          -> "Again\n"
rename other.csv folder/other.csv       -> ENOENT
rename other.csv /mnt/elsewhere.csv     -> EXDEV
rename other.csv other.csv              -> ok
unlink other.csv                        -> ok
unlink other.csv                        -> ENOENT
list . other.csv                        -> missing

# Folders.
mkdir folder                            -> ok
stat folder                             -> dir 0755
mkdir folder                            -> EEXIST
list . folder                           -> there
mkdir nothing/folder                    -> ENOENT
stream folder/day.csv day               -> ok
list folder day.csv                     -> there
rmdir folder                            -> ENOTEMPTY
unlink folder                           -> EISDIR
truncate folder 0                       -> EISDIR
d = open folder rd                      -> ok
read d 16                               -> EISDIR
write d 1                               -> EBADF
close d                                 -> ok
d = open folder wr                      -> EISDIR
d = open folder wr+creat                -> EISDIR
rename folder/day.csv day.csv           -> ok
rename day.csv folder                   -> EISDIR
rename folder day.csv                   -> ENOTDIR
rename folder folder/below              -> EINVAL
rmdir folder                            -> ok
rmdir folder                            -> ENOENT

# A file that is deleted while it is open is there until it is closed.
d = open day.csv rdwr                   -> ok
unlink day.csv                          -> ok
stat day.csv                            -> ENOENT
read d 16                               -> "day"
write d ,more                           -> 5
umount /mnt/sd-card                     -> EBUSY
close d                                 -> ok

# What was written is there after mounting anew.
stream kept.csv kept                    -> ok
umount /mnt/sd-card                     -> ok
stat kept.csv                           -> ENOENT
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync "" -> ok
show kept.csv                           -> "kept"
unlink kept.csv                         -> ok
umount /mnt/sd-card                     -> ok
)";
