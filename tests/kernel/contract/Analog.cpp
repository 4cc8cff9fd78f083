#include "tests/kernel/contract/Contract.h"

// The board's own analog converter.
const char contract::kAnalog[] = R"(
in /sys/bus/iio/devices
stat .                                  -> dir 0755
list . iio:device0                      -> there
stat iio:device0                        -> dir 0755
lstat iio:device0                       -> link 0777
stat iio:device9                        -> ENOENT

in /sys/bus/iio/devices/iio:device0
list . in_voltage0_raw                  -> there
list . in_voltage11_raw                 -> there
list . in_voltage12_raw                 -> missing
list . in_voltage_scale                 -> there
stat in_voltage0_raw                    -> file 0644
stat in_voltage_scale                   -> file 0644
size in_voltage0_raw                    -> 4096
show in_voltage0_raw                    -> "0\n"
show in_voltage6_raw                    -> "*
show in_voltage11_raw                   -> "*
show in_voltage_scale                   -> "0.0001*
show in_voltage12_raw                   -> open: ENOENT
show in_voltage_raw                     -> open: ENOENT
show in_voltage0_scale                  -> open: ENOENT
stat in_voltage00_raw                   -> ENOENT
access in_voltage0_raw r+w              -> ok
access in_voltage0_raw x                -> EACCES
access in_voltage12_raw f               -> ENOENT
access in_voltage0_raw/below f          -> ENOTDIR

# It cannot be set.
store in_voltage0_raw 1                 -> EINVAL
store in_voltage0_raw ""                -> ok
store in_voltage_scale 1                -> EINVAL
stream in_voltage0_raw 1                -> no flush
d = open in_voltage12_raw wr+creat+trunc -> EACCES
d = open in_voltage12_raw wr            -> ENOENT
stream in_voltage12_raw 1               -> no stream
unlink in_voltage0_raw                  -> EPERM
mkdir in_voltage12_raw                  -> EPERM
truncate in_voltage0_raw 0              -> ok

d = open in_voltage0_raw rd             -> ok
read d 1                                -> "0"
read d 16                               -> "\n"
read d 16                               -> ""
lseek d 0 set                           -> 0
read d 16                               -> "0\n"
pread d 16 0                            -> "0\n"
lseek d 0 end                           -> 4096
poll d pri 0                            -> nothing
ioctl d 0x5401 0                        -> ENOTTY
write d 1                               -> EBADF
m = mmap d read+shared 4096 0           -> ENODEV
close d                                 -> ok
d = open . rd                           -> ok
read d 16                               -> EISDIR
close d                                 -> ok
)";
