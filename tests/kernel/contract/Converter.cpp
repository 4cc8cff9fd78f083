#include "tests/kernel/contract/Contract.h"

// The converter's bus device. What the converter answers is not told here, only how the bus takes
// it.
const char contract::kConverter[] = R"(
in /dev
stat spidev32765.1                      -> chr *
lstat spidev32765.1                     -> chr *
access spidev32765.1 r+w                -> ok
access spidev32765.1 x                  -> EACCES
stat spidev32765.9                      -> ENOENT
stat spidev32765.1/below                -> ENOTDIR
list spidev32765.1 below                -> ENOTDIR
readlink spidev32765.1                  -> EINVAL
truncate spidev32765.1 0                -> EINVAL
mkdir spidev32765.1                     -> EEXIST
rmdir spidev32765.1                     -> ENOTDIR
d = open spidev32765.9 rdwr             -> ENOENT
d = open spidev32765.1 rdwr+dir         -> ENOTDIR
d = open spidev32765.1 rdwr+creat+excl  -> EEXIST
d = open spidev32765.1/below rd         -> ENOTDIR

# It is a stream of bytes, and no file.
d = open spidev32765.1 rdwr             -> ok
fstat d                                 -> chr *
lseek d 0 set                           -> ESPIPE
lseek d 0 end                           -> ESPIPE
pread d 2 0                             -> ESPIPE
pwrite d ab 0                           -> ESPIPE
ftruncate d 0                           -> EINVAL
m = mmap d read+shared 4096 0           -> ENODEV
poll d in+out 0                         -> in+out
poll d pri 0                            -> nothing
ioctl d 0x5401 0                        -> ENOTTY
ioctl d 0x6B7F 0                        -> ENOTTY

# Mode: clock phase, clock polarity and chip select high are there; what else is asked for is refused,
# but for wider buses, which are forgone.
ioctl d RD_MODE 0                       -> 0
ioctl d RD_MODE32 0                     -> 0
ioctl d WR_MODE 1                       -> ok
ioctl d RD_MODE 0                       -> 1
ioctl d WR_MODE 3                       -> ok
ioctl d RD_MODE32 0                     -> 3
ioctl d WR_MODE32 7                     -> ok
ioctl d RD_MODE 0                       -> 7
ioctl d WR_MODE 0x08                    -> EINVAL
ioctl d WR_MODE 0x10                    -> EINVAL
ioctl d WR_MODE 0x20                    -> EINVAL
ioctl d WR_MODE 0x40                    -> EINVAL
ioctl d WR_MODE 0x80                    -> EINVAL
ioctl d RD_MODE 0                       -> 7
ioctl d WR_MODE32 0x102                 -> ok
ioctl d RD_MODE32 0                     -> 2
ioctl d WR_MODE32 0x300                 -> EINVAL
ioctl d WR_MODE32 0x40000               -> EINVAL
ioctl d RD_MODE32 0                     -> 2
ioctl d RD_LSB_FIRST 0                  -> 0
ioctl d WR_LSB_FIRST 0                  -> ok
ioctl d WR_LSB_FIRST 1                  -> EINVAL
ioctl d RD_LSB_FIRST 0                  -> 0
ioctl d WR_MODE 1                       -> ok

# Bits per word: 8 and 16 are there, 7 and 17 are not.
ioctl d RD_BITS 0                       -> 8
ioctl d WR_BITS 16                      -> ok
ioctl d RD_BITS 0                       -> 16
ioctl d WR_BITS 7                       -> EINVAL
ioctl d WR_BITS 17                      -> EINVAL
ioctl d WR_BITS 32                      -> EINVAL
ioctl d WR_BITS 33                      -> EINVAL
ioctl d RD_BITS 0                       -> 16
ioctl d WR_BITS 0                       -> ok
ioctl d RD_BITS 0                       -> 8

# Speed: any but 0.
ioctl d RD_SPEED 0                      -> 1000000
ioctl d WR_SPEED 0                      -> EINVAL
ioctl d WR_SPEED 100000000              -> ok
ioctl d RD_SPEED 0                      -> 100000000
ioctl d WR_SPEED 1                      -> ok
ioctl d RD_SPEED 0                      -> 1
ioctl d WR_SPEED 500000                 -> ok

# Bytes.
write d ""                              -> 0
send d 1                                -> 1
send d 2                                -> 2
send d 4096                             -> 4096
send d 4097                             -> EMSGSIZE
receive d 0                             -> 0
receive d 1                             -> 1
receive d 4                             -> 4
receive d 4096                          -> 4096
receive d 4097                          -> EMSGSIZE
receive d 70000                         -> EMSGSIZE

# Words of 16 bits come whole.
ioctl d WR_BITS 16                      -> ok
send d 2                                -> 2
send d 3                                -> EINVAL
receive d 4                             -> 4
receive d 1                             -> EINVAL
receive d 4097                          -> EMSGSIZE
message d both:3                        -> EINVAL
message d both:3/8                      -> 3
message d both:2/7                      -> EINVAL

# Messages: each record is rounded up to 64 bytes, and the sent and the received ones are added up
# apart.
ioctl d WR_BITS 8                       -> ok
message d both:2                        -> 2
message d tx:2 rx:4                     -> 6
message d both:2/16                     -> 2
message d both:3/16                     -> EINVAL
message d both:0                        -> 0
message d both:2 x 64                   -> 128
message d both:2 x 65                   -> EMSGSIZE
message d both:64 x 64                  -> 4096
message d both:65 x 32                  -> 2080
message d both:65 x 33                  -> EMSGSIZE
message d both:4096                     -> 4096
message d both:4097                     -> EMSGSIZE
message d tx:4096 rx:4096               -> 8192
message d tx:4096 tx:1                  -> EMSGSIZE
message d rx:4096 rx:1                  -> EMSGSIZE
message d tx:2 x 64                     -> 128
message d tx:4096 rx:0 both:0           -> 4096
message d none:2                        -> 2
message d none:2 both:2                 -> 4
message d both:2/8 both:2/16            -> 4
message d both:2 size 0                 -> 0
message d both:2 size 31                -> EINVAL
message d both:2 size 33                -> EINVAL

# A second descriptor shares the device's settings.
e = open spidev32765.1 rdwr             -> ok
ioctl e RD_SPEED 0                      -> 500000
ioctl e RD_MODE 0                       -> 1
ioctl e WR_BITS 16                      -> ok
ioctl d RD_BITS 0                       -> 16
close d                                 -> ok
ioctl e RD_SPEED 0                      -> 500000
close e                                 -> ok

# The last close loses the speed, and nothing else.
d = open spidev32765.1 rdwr             -> ok
ioctl d RD_SPEED 0                      -> 1000000
ioctl d RD_BITS 0                       -> 16
ioctl d RD_MODE 0                       -> 1
ioctl d WR_BITS 8                       -> ok
ioctl d WR_MODE 0                       -> ok
close d                                 -> ok
ioctl d RD_MODE 0                       -> EBADF

# One way only.
d = open spidev32765.1 rd               -> ok
receive d 2                             -> 2
send d 2                                -> EBADF
ioctl d WR_SPEED 500000                 -> ok
message d both:2                        -> 2
close d                                 -> ok
d = open spidev32765.1 wr               -> ok
send d 2                                -> 2
receive d 2                             -> EBADF
ioctl d RD_BITS 0                       -> 8
m = mmap d read+shared 4096 0           -> EACCES
close d                                 -> ok
)";
