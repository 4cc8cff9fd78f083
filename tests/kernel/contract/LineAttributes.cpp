#include "tests/kernel/contract/Contract.h"

// An exported line: direction, value, edge, active_low, and waiting for its edges.
const char contract::kLineAttributes[] = R"(
in /sys/class/gpio
store export 7                          -> ok
in /sys/class/gpio/pioA7

# A line that was never used is an input.
stat direction                          -> file 0644
stat value                              -> file 0644
stat edge                               -> file 0644
stat active_low                         -> file 0644
size value                              -> 4096
show direction                          -> "in\n"
show value                              -> "0\n"
show edge                               -> "none\n"
show active_low                         -> "0\n"

# What the folder lacks is not made.
d = open active wr+creat+trunc          -> EACCES
d = open active wr                      -> ENOENT
d = open active rd                      -> ENOENT
d = open value/below rd                 -> ENOTDIR
stream active "1"                       -> no stream
mkdir mine                              -> EPERM
unlink value                            -> EPERM
rename value level                      -> EPERM
rename value direction                  -> EPERM
rename value value                      -> ok
truncate value 0                        -> ok
access value x                          -> EACCES
access value r+w                        -> ok
list value below                        -> ENOTDIR

# Only an output takes a value, and refuses before it reads it.
store value 1                           -> EPERM
store value on                          -> EPERM
store value ""                          -> ok
stream value 1                          -> no flush

# direction: "out" and "low" drive low, "high" drives high.
store direction sideways                -> EINVAL
store direction OUT                     -> EINVAL
store direction " out"                  -> EINVAL
store direction "out\n\n"               -> EINVAL
store direction "\n"                    -> EINVAL
store direction outin                   -> EINVAL
show direction                          -> "in\n"
store direction high                    -> ok
show direction                          -> "out\n"
show value                              -> "1\n"
store direction "out\n"                 -> ok
show value                              -> "0\n"
store direction high                    -> ok
store direction low                     -> ok
show value                              -> "0\n"
show direction                          -> "out\n"

# value: anything but 0 is 1.
store value 1                           -> ok
show value                              -> "1\n"
store value "0\n"                       -> ok
show value                              -> "0\n"
store value 5                           -> ok
show value                              -> "1\n"
store value 0x0                         -> ok
show value                              -> "0\n"
store value -1                          -> ok
show value                              -> "1\n"
store value on                          -> EINVAL
store value ""                          -> ok
store value "1 "                        -> EINVAL
store value 4294967296                  -> ERANGE
show value                              -> "1\n"
stream value 0                          -> ok
show value                              -> "0\n"

# A place in the file: a read goes on from where the last read or write ended.
d = open value rdwr                     -> ok
read d 1                                -> "0"
read d 16                               -> "\n"
read d 16                               -> ""
lseek d 0 set                           -> 0
read d 16                               -> "0\n"
lseek d 0 cur                           -> 2
lseek d 1 set                           -> 1
read d 16                               -> "\n"
lseek d 2 set                           -> 2
read d 16                               -> ""
lseek d 100 set                         -> 100
read d 16                               -> ""
lseek d -1 set                          -> EINVAL
lseek d -1 cur                          -> 99
lseek d 0 end                           -> 4096
lseek d -4096 end                       -> 0
write d 1                               -> 1
read d 16                               -> "\n"
lseek d 0 set                           -> 0
read d 0                                -> ""
read d 16                               -> "1\n"
write d x                               -> EINVAL
lseek d 0 cur                           -> 2
pread d 16 0                            -> "1\n"
pread d 16 1                            -> "\n"
pread d 16 2                            -> ""
pread d 16 -1                           -> EINVAL
pwrite d 0 7                            -> 1
pread d 16 0                            -> "0\n"
lseek d 0 cur                           -> 2
ftruncate d 0                           -> ok
ioctl d 0x5401 0                        -> ENOTTY
m = mmap d read+shared 4096 0           -> ENODEV
fstat d                                 -> file 0644
close d                                 -> ok
d = open direction rd                   -> ok
write d in                              -> EBADF
ftruncate d 0                           -> EINVAL
read d 2                                -> "ou"
store direction in                      -> ok
read d 16                               -> "t\n"
lseek d 1 set                           -> 1
read d 16                               -> "n\n"
close d                                 -> ok
d = open direction rd+trunc             -> ok
close d                                 -> ok
d = open value wr+excl                  -> ok
close d                                 -> ok
d = open value rd+creat+excl            -> EEXIST
d = open value rd+dir                   -> ENOTDIR

# active_low turns value about, and what is driven stays as it is.
store direction out                     -> ok
store active_low 1                      -> ok
show active_low                         -> "1\n"
show value                              -> "1\n"
store value 0                           -> ok
show value                              -> "0\n"
store active_low 0                      -> ok
show value                              -> "1\n"
store active_low 5                      -> ok
show active_low                         -> "1\n"
store direction high                    -> ok
show value                              -> "0\n"
store direction low                     -> ok
show value                              -> "1\n"
store active_low yes                    -> EINVAL
store active_low ""                     -> ok
store active_low 0                      -> ok

# edge: an output has none.
show edge                               -> "none\n"
store edge both                         -> EIO
store edge rising                       -> EIO
store edge none                         -> ok
store edge sometimes                    -> EINVAL
store edge BOTH                         -> EINVAL
show edge                               -> "none\n"
store direction in                      -> ok
store edge rising                       -> ok
show edge                               -> "rising\n"
store edge "falling\n"                  -> ok
show edge                               -> "falling\n"
store edge both                         -> ok
store edge both                         -> ok
show edge                               -> "both\n"
store value 1                           -> EPERM

# The other way about it is not refused: a line that watches edges becomes an output.
store direction out                     -> ok
show edge                               -> "both\n"
show direction                          -> "out\n"
store value 1                           -> ok
show value                              -> "1\n"
store edge both                         -> ok
store edge rising                       -> EIO
show edge                               -> "none\n"
store edge none                         -> ok
store direction high                    -> ok
store direction in                      -> ok
store edge falling                      -> ok
store active_low 1                      -> ok
show edge                               -> "falling\n"
show value                              -> "1\n"
store active_low 0                      -> ok
store edge none                         -> ok
store direction out                     -> ok
store value 1                           -> ok

# Unexport keeps level and direction, and nothing else.
store active_low 1                      -> ok
store direction in                      -> ok
store edge both                         -> ok
store edge none                         -> ok
store direction high                    -> ok
store /sys/class/gpio/unexport 7        -> ok
in /sys/class/gpio
d = open pioA7/value wr+creat+trunc     -> ENOENT
d = open pioA7/value rd                 -> ENOENT
d = open pioA7 rd                       -> ENOENT
stream pioA7/value 1                    -> no stream
store export 7                          -> ok
show pioA7/direction                    -> "out\n"
show pioA7/value                        -> "1\n"
show pioA7/active_low                   -> "0\n"
store pioA7/direction in                -> ok
store pioA7/edge both                   -> ok
store unexport 7                        -> ok
store export 7                          -> ok
show pioA7/edge                         -> "none\n"

# A descriptor outlives its line's export, and not even the next one revives it.
d = open pioA7/value rdwr               -> ok
read d 16                               -> "0\n"
poll d pri 0                            -> nothing
store unexport 7                        -> ok
poll d pri 0                            -> pri+err
lseek d 0 set                           -> 0
read d 16                               -> ENODEV
pread d 16 0                            -> ENODEV
write d 1                               -> ENODEV
fstat d                                 -> file 0644
store export 7                          -> ok
lseek d 0 set                           -> 0
read d 16                               -> ENODEV
write d 1                               -> ENODEV
write d ""                              -> ENODEV
poll d pri 0                            -> pri+err
close d                                 -> ok

# Waiting: a value that was never read is news, one that was read is not until an edge comes.
d = open pioA7/value rd                 -> ok
poll d pri 0                            -> pri+err
poll d pri+err 1000                     -> pri+err
poll d none 0                           -> err
poll d in+pri 0                         -> in+pri+err
read d 16                               -> "0\n"
poll d pri 0                            -> nothing
poll d pri 20                           -> nothing
poll d in 0                             -> in
poll d in+out+pri 0                     -> in+out
close d                                 -> ok
d = open pioA7/direction rd             -> ok
poll d pri 0                            -> pri+err
read d 16                               -> "in\n"
poll d pri 0                            -> nothing
close d                                 -> ok
store unexport 7                        -> ok

# The pump's flag comes to the home sensor, B18: the pump is enabled by A2 low and turned by channel 1.
store export 50                         -> ok
store export 2                          -> ok
store pioB18/edge both                  -> ok
show pioB18/value                       -> "1\n"
d = open pioB18/value rd                -> ok
read d 16                               -> "1\n"
poll d pri 100                          -> nothing
store pioA2/direction low               -> ok
store /sys/class/pwm/pwmchip0/export 1  -> ok
in /sys/class/pwm/pwmchip0/pwm1
store period 500000                     -> ok
store duty_cycle 250000                 -> ok
store enable 1                          -> ok
poll d pri 5000                         -> pri+err
poll d pri 0                            -> pri+err
lseek d 0 set                           -> 0
read d 16                               -> "0\n"
poll d pri 0                            -> nothing
poll d pri 5000                         -> pri+err
lseek d 0 set                           -> 0
read d 16                               -> "1\n"
store enable 0                          -> ok
poll d pri 100                          -> nothing
in /sys/class/gpio
store pioB18/edge none                  -> ok
close d                                 -> ok
store unexport 50                       -> ok
store pioA2/direction in                -> ok
store unexport 2                        -> ok
store /sys/class/pwm/pwmchip0/unexport 1 -> ok
)";
