#include "tests/kernel/contract/Contract.h"

// The memory device, through which the controller's registers at 0xFFFFF000 are reached.
const char contract::kMemory[] = R"(
in /dev
stat mem                                -> chr *
lstat mem                               -> chr *
access mem r+w                          -> ok
access mem x                            -> EACCES
stat mem/below                          -> ENOTDIR
list mem below                          -> ENOTDIR
truncate mem 0                          -> EINVAL
rmdir mem                               -> ENOTDIR
mkdir mem                               -> EEXIST
d = open mem rdwr+dir                   -> ENOTDIR
d = open mem rdwr+creat+excl            -> EEXIST
d = open mem/below rdwr                 -> ENOTDIR

d = open mem rdwr+sync                  -> ok
fstat d                                 -> chr *
poll d in+out 0                         -> in+out
poll d pri 0                            -> nothing
ioctl d 0x5401 0                        -> ENOTTY
ftruncate d 0                           -> EINVAL
lseek d 0 set                           -> 0
lseek d 4096 set                        -> 4096
lseek d 4096 cur                        -> 8192
lseek d 0 end                           -> EINVAL
lseek d 0 set                           -> 0

# The page, and what of it can be mapped: whole pages that begin at one, and nothing beyond the last.
m = mmap d read+write+shared 4096 0xFFFFF000 -> ok
munmap m                                -> ok
m = mmap d read+shared 4096 0xFFFFF000  -> ok
munmap m                                -> ok
m = mmap d read+write+private 4096 0xFFFFF000 -> ok
munmap m                                -> ok
m = mmap d read+write+shared 1 0xFFFFF000 -> ok
munmap m                                -> ok
m = mmap d read+write+shared 0 0xFFFFF000 -> EINVAL
m = mmap d read+write+shared 4097 0xFFFFF000 -> EINVAL
m = mmap d read+write+shared 8192 0xFFFFF000 -> EINVAL
m = mmap d read+write+shared 4096 0xFFFFF004 -> EINVAL
m = mmap d read+write+shared 4096 0xFFFFFFFF -> EINVAL
m = mmap d read+write+shared 4096 0x100000000 -> EINVAL
m = mmap d read+write+shared 4096 -4096 -> EINVAL
m = mmap d read+write 4096 0xFFFFF000   -> EINVAL
close d                                 -> ok

# A mapping outlives its descriptor.
d = open mem rdwr+sync                  -> ok
m = mmap d read+write+shared 4096 0xFFFFF000 -> ok
close d                                 -> ok
munmap m                                -> ok
m = mmap d read+write+shared 4096 0xFFFFF000 -> EBADF

# The registers: a level is set at 0x30 and cleared at 0x34 of a port, and shown at 0x3C; port A begins
# at 0x400, port C at 0x800. Only outputs obey, and only when the page is shared.
store /sys/class/gpio/export 7          -> ok
store /sys/class/gpio/export 8          -> ok
store /sys/class/gpio/export 95         -> ok
store /sys/class/gpio/pioA7/direction out -> ok
store /sys/class/gpio/pioC31/direction out -> ok
d = open mem rdwr+sync                  -> ok
m = mmap d read+write+shared 4096 0xFFFFF000 -> ok
peek m 0x43C 0x80                       -> 0
poke m 0x430 0x180                      -> ok
poke m 0x830 0x80000000                 -> ok
munmap m                                -> ok
show /sys/class/gpio/pioA7/value        -> "1\n"
show /sys/class/gpio/pioA8/value        -> "0\n"
show /sys/class/gpio/pioC31/value       -> "1\n"
m = mmap d read+shared 4096 0xFFFFF000  -> ok
peek m 0x43C 0x180                      -> 128
peek m 0x83C 0x80000000                 -> 2147483648
peek m 0x430 0xFFFFFFFF                 -> 0
munmap m                                -> ok
m = mmap d read+write+private 4096 0xFFFFF000 -> ok
poke m 0x434 0x80                       -> ok
munmap m                                -> ok
show /sys/class/gpio/pioA7/value        -> "1\n"
m = mmap d write+shared 4096 0xFFFFF000 -> ok
poke m 0x434 0x80                       -> ok
poke m 0x834 0x80000000                 -> ok
munmap m                                -> ok
show /sys/class/gpio/pioA7/value        -> "0\n"
show /sys/class/gpio/pioC31/value       -> "0\n"
close d                                 -> ok
store /sys/class/gpio/pioA7/direction in -> ok
store /sys/class/gpio/pioC31/direction in -> ok
store /sys/class/gpio/unexport 7        -> ok
store /sys/class/gpio/unexport 8        -> ok
store /sys/class/gpio/unexport 95       -> ok

# What the descriptor may not, the mapping may not.
d = open mem rd+sync                    -> ok
m = mmap d read+write+shared 4096 0xFFFFF000 -> EACCES
m = mmap d write+shared 4096 0xFFFFF000 -> EACCES
m = mmap d read+shared 4096 0xFFFFF000  -> ok
munmap m                                -> ok
m = mmap d read+write+private 4096 0xFFFFF000 -> ok
munmap m                                -> ok
write d 1                               -> EBADF
close d                                 -> ok
d = open mem wr+sync                    -> ok
m = mmap d write+shared 4096 0xFFFFF000 -> EACCES
m = mmap d write+private 4096 0xFFFFF000 -> EACCES
read d 1                                -> EBADF
close d                                 -> ok
d = open mem rdwr                       -> ok
m = mmap d read+write+shared 4096 0xFFFFF000 -> ok
munmap m                                -> ok
close d                                 -> ok
)";
