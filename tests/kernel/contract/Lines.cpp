#include "tests/kernel/contract/Contract.h"

// The class folder, its two stores, and what exporting a line makes.
const char contract::kLines[] = R"(
in /sys/class/gpio

# The class folder.
stat .                                  -> dir 0755
lstat .                                 -> dir 0755
access . f                              -> ok
access . r+w+x                          -> ok
access . 8                              -> EINVAL
list . export                           -> there
list . unexport                         -> there
list . gpiochip0                        -> there
list /sys/class/gpio/ gpiochip0         -> there
list . pioA7                            -> missing
statfs .                                -> ok
statfs export                           -> ok
statfs nothing                          -> ENOENT
statfs export/below                     -> ENOTDIR
size export                             -> 4096
stat export                             -> file 0200
lstat export                            -> file 0200
stat unexport                           -> file 0200
stat nothing                            -> ENOENT
lstat nothing                           -> ENOENT
stat export/below                       -> ENOTDIR
stat export/                            -> ENOTDIR
access export f                         -> ok
access export w                         -> ok
access export r                         -> ok
access export x                         -> EACCES
access nothing f                        -> ENOENT
access export/below f                   -> ENOTDIR
list export below                       -> ENOTDIR
list nothing below                      -> ENOENT
readlink export                         -> EINVAL
readlink nothing                        -> ENOENT
d = open . rd                           -> ok
read d 16                               -> EISDIR
pread d 16 0                            -> EISDIR
write d "1"                             -> EBADF
fstat d                                 -> dir 0755
lseek d 0 set                           -> 0
poll d in+out 0                         -> in+out
ioctl d 0x5401 0                        -> ENOTTY
m = mmap d read+shared 4096 0           -> ENODEV
close d                                 -> ok
close d                                 -> EBADF
read d 16                               -> EBADF
poll d in 0                             -> nothing
d = open . wr                           -> EISDIR
d = open . rd+creat                     -> EISDIR
d = open . rd+dir                       -> ok
close d                                 -> ok

# The attribute tree takes no files and loses none.
mkdir mine                              -> EPERM
mkdir export                            -> EEXIST
mkdir export/mine                       -> ENOTDIR
mkdir nothing/mine                      -> ENOENT
rmdir export                            -> ENOTDIR
rmdir nothing                           -> ENOENT
unlink export                           -> EPERM
unlink nothing                          -> ENOENT
rename export exported                  -> EPERM
rename export unexport                  -> EPERM
rename nothing exported                 -> ENOENT
d = open mine wr+creat                  -> EACCES
d = open mine wr+creat+trunc            -> EACCES
d = open mine rd+creat                  -> EACCES
d = open mine wr                        -> ENOENT
d = open mine rd                        -> ENOENT
d = open export/mine wr+creat           -> ENOTDIR
d = open nothing/mine wr+creat          -> ENOENT

# The stores open for writing only.
d = open export rd                      -> EACCES
d = open export rdwr                    -> EACCES
d = open export wr+dir                  -> ENOTDIR
d = open export wr+creat+excl           -> EEXIST
d = open export wr+creat+trunc          -> ok
read d 16                               -> EBADF
pread d 16 0                            -> EBADF
fstat d                                 -> file 0200
ioctl d 0x5401 0                        -> ENOTTY
m = mmap d read+shared 4096 0           -> EACCES
poll d pri 0                            -> pri+err
close d                                 -> ok
d = open export wr+append+nofollow+sync -> ok
close d                                 -> ok
show export                             -> open: EACCES
truncate export 0                       -> ok
truncate export 5                       -> ok
truncate export -1                      -> EINVAL
size export                             -> 4096
stream export "zero"                    -> no flush
stream mine "zero"                      -> no stream

# Exporting makes the line's folder, by the name that the controller gives it.
store export 7                          -> ok
stat pioA7                              -> dir 0755
lstat pioA7                             -> link 0777
list . pioA7                            -> there
list pioA7 value                        -> there
list pioA7 direction                    -> there
list pioA7 edge                         -> there
list pioA7 active_low                   -> there
list pioA7 export                       -> missing
stat gpio7                              -> ENOENT
stat pioA07                             -> ENOENT
d = open pioA7 rd                       -> ok
read d 16                               -> EISDIR
close d                                 -> ok
d = open pioA7 wr                       -> EISDIR
d = open pioA7 rd+nofollow              -> ELOOP
unlink pioA7                            -> EPERM
rmdir pioA7                             -> ENOTDIR
rmdir pioA7/                            -> ENOTDIR
rename pioA7 pioA8                      -> EPERM
store export 7                          -> EBUSY
stream export 7                         -> no flush
stat pioA7/value                        -> file 0644
store unexport 7                        -> ok
stat pioA7                              -> ENOENT
lstat pioA7                             -> ENOENT
stat pioA7/value                        -> ENOENT
list . pioA7                            -> missing
store unexport 7                        -> EINVAL

# Numbers as the stores read them: one newline at the end, any of three bases, one sign.
store export "7\n"                      -> ok
store unexport "7\n"                    -> ok
store export 0x7                        -> ok
store unexport 0x7                      -> ok
store export 0X7                        -> ok
store unexport 07                       -> ok
store export 010                        -> ok
stat pioA8                              -> dir 0755
store unexport 8                        -> ok
store export +7                         -> ok
store unexport +7                       -> ok
store export -0                         -> ok
stat pioA0                              -> dir 0755
store unexport 0                        -> ok
store export 127                        -> ok
stat pioD31                             -> dir 0755
store unexport 127                      -> ok
store export 08                         -> EINVAL
store export 0x                         -> EINVAL
store export 128                        -> EINVAL
store export 5000                       -> EINVAL
store export -1                         -> EINVAL
store export abc                        -> EINVAL
store export ""                         -> ok
store export "\n"                       -> EINVAL
store export " 7"                       -> EINVAL
store export "7 "                       -> EINVAL
store export "7\n\n"                    -> EINVAL
store export "5 1"                      -> EINVAL
store export 7x                         -> EINVAL
store export +-7                        -> EINVAL
store export --7                        -> EINVAL
store export 4294967296                 -> ERANGE
store export 99999999999999999999       -> ERANGE
store export -99999999999999999999      -> ERANGE
d = open export wr                      -> ok
send d 5000                             -> EINVAL
close d                                 -> ok
store unexport 128                      -> EINVAL
store unexport abc                      -> EINVAL
store unexport 50                       -> EINVAL
store unexport 99999999999999999999     -> ERANGE

# Each write is a store of its own, wherever in the file it goes.
d = open export wr                      -> ok
write d 5                               -> 1
write d 1                               -> 1
write d 5                               -> EBUSY
pwrite d 7 100                          -> 1
pwrite d 7 -1                           -> EINVAL
lseek d 0 cur                           -> 2
close d                                 -> ok
stat pioA5                              -> dir 0755
stat pioA1                              -> dir 0755
stat pioB19                             -> ENOENT
store unexport 5                        -> ok
store unexport 1                        -> ok
store unexport 7                        -> ok

# The controller tells what it has.
stat gpiochip0                          -> dir 0755
lstat gpiochip0                         -> link 0777
show gpiochip0/base                     -> "0\n"
show gpiochip0/ngpio                    -> "128\n"
stat gpiochip0/base                     -> file 0444
stat gpiochip0/label                    -> file 0444
store gpiochip0/base 1                  -> open: EACCES
d = open gpiochip0/ngpio rdwr           -> EACCES
d = open gpiochip0/mine wr+creat        -> EACCES
show gpiochip0/mine                     -> open: ENOENT
)";
