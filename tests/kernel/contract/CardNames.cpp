#include "tests/kernel/contract/Contract.h"

// Names on the card, as its FAT file system has them: case is kept and makes no difference.
const char contract::kCardNames[] = R"(
in /mnt/sd-card
mount /dev/mmcblk0p1 /mnt/sd-card vfat sync "" -> ok
stream Day.csv "first\n"                -> ok
show day.CSV                            -> "first\n"
stat DAY.CSV                            -> file 0755
same Day.csv day.csv                    -> same
list . Day.csv                          -> there
list . day.csv                          -> missing
d = open DAY.csv wr+creat+excl          -> EEXIST
d = open DAY.csv wr+append+creat        -> ok
write d more                            -> 4
close d                                 -> ok
show Day.csv                            -> "first\nmore"
mkdir DAY.CSV                           -> EEXIST
rename Day.csv DAY.CSV                  -> ok
rename day.csv night.csv                -> ok
stat Day.csv                            -> ENOENT
mkdir Folder                            -> ok
stream folder/deep.csv deep             -> ok
show FOLDER/DEEP.CSV                    -> "deep"
unlink FOLDER/Deep.csv                  -> ok
rmdir fOLDER                            -> ok
stat Folder                             -> ENOENT

# Dots at the end do not count.
show night.csv.                         -> "first\nmore"
show night.csv..                        -> "first\nmore"
stat night.csv/                         -> ENOTDIR
d = open night.csv/ rd                  -> ENOTDIR
d = open new.csv/ wr+creat              -> EISDIR
d = open night.csv rd+nofollow          -> ok
close d                                 -> ok

# Characters that no name has.
d = open a:b wr+creat                   -> EINVAL
d = open a*b wr+creat                   -> EINVAL
d = open a?b wr+creat                   -> EINVAL
d = open a<b wr+creat                   -> EINVAL
d = open a>b wr+creat                   -> EINVAL
d = open a|b wr+creat                   -> EINVAL
d = open "a\\b" wr+creat                -> EINVAL
d = open "a\"b" wr+creat                -> EINVAL
d = open "a\nb" wr+creat                -> EINVAL
d = open "ab " wr+creat                 -> EINVAL
d = open a:b rd                         -> ENOENT
stat a:b                                -> ENOENT
mkdir a:b                               -> EINVAL
rename night.csv a:b                    -> EINVAL
d = open "a+b,c;d=[e] f" wr+creat       -> ok
close d                                 -> ok
unlink "A+B,C;D=[E] F"                  -> ok
stream 2026-03-07_logfile.csv long      -> ok
unlink 2026-03-07_logfile.csv           -> ok
unlink night.csv                        -> ok
umount /mnt/sd-card                     -> ok
)";
