#include "tests/kernel/contract/Contract.h"

// The folders above the board's devices, and what the kernel adds to each device's own.
const char contract::kFolders[] = R"(
in /sys
stat class                              -> dir 0755
list class gpio                         -> there
list class pwm                          -> there
list class nothing                      -> missing
stat class/nothing                      -> ENOENT
stat bus                                -> dir 0755
list bus iio                            -> there
stat bus/iio                            -> dir 0755
list bus/iio devices                    -> there
list bus/iio/devices iio:device0        -> there
stat block                              -> dir 0755
list block mmcblk0                      -> there
list class/pwm pwmchip0                 -> there
list class/gpio gpiochip0               -> there
mkdir class/mine                        -> EPERM
d = open class/mine wr+creat            -> EACCES
d = open class rd+dir                   -> ok
close d                                 -> ok
rmdir class                             -> EPERM

# Numbers of files and of devices.
store class/gpio/export 7               -> ok
same class/gpio/export class/gpio/export -> same
same class/gpio/export class/gpio/unexport -> another
same class/gpio/pioA7/value class/gpio/pioA7/value -> same
same class/gpio/pioA7/value class/gpio/pioA7/edge -> another
same class/gpio class/gpio/             -> same
device class/gpio/export                -> 0:0
device /dev/mem                         -> 1:1
device /dev/spidev32765.1               -> 153:0
device /dev/mmcblk0                     -> 179:0
device /dev/mmcblk0p1                   -> 179:1
type class/gpio/export                  -> sysfs
type class                              -> sysfs
type /proc                              -> proc
statfs /usr                             -> ok
statfs /usr/nothing                     -> ENOENT

# uevent
list class/gpio/pioA7 uevent            -> there
stat class/gpio/pioA7/uevent            -> file 0644
show class/gpio/pioA7/uevent            -> ""
store class/gpio/pioA7/uevent change    -> ok
store class/gpio/pioA7/uevent nonsense  -> EINVAL
show class/gpio/gpiochip0/uevent        -> ""
show class/pwm/pwmchip0/uevent          -> ""
store class/pwm/pwmchip0/export 0       -> ok
show class/pwm/pwmchip0/pwm0/uevent     -> ""
list class/pwm/pwmchip0/pwm0 capture    -> there
store class/pwm/pwmchip0/unexport 0     -> ok
show bus/iio/devices/iio:device0/uevent -> "DEVTYPE=iio_device\n"
show block/mmcblk0/uevent               -> "MAJOR=179\nMINOR=0\nDEVNAME=mmcblk0\nDEVTYPE=disk\n*
show block/mmcblk0/mmcblk0p1/uevent     -> "MAJOR=179\nMINOR=1\nDEVNAME=mmcblk0p1\nDEVTYPE=partition\n*
show block/mmcblk0/dev                  -> "179:0\n"
show block/mmcblk0/mmcblk0p1/partition  -> "1\n"
show block/mmcblk0/ro                   -> "0\n"
show block/mmcblk0/removable            -> "0\n"
stat class/gpio/pioA7/subsystem         -> dir 0755
lstat class/gpio/pioA7/subsystem        -> link 0777
stat class/gpio/pioA7/device            -> dir 0755
stat class/gpio/pioA7/power             -> dir 0755
stat class/pwm/pwmchip0/subsystem       -> dir 0755
stat class/pwm/pwmchip0/device          -> dir 0755
store class/gpio/unexport 7             -> ok

# Numbers, in any base and with a sign.
store class/gpio/export 08              -> EINVAL
store class/gpio/export 0x              -> EINVAL
store class/gpio/export 0xg             -> EINVAL
store class/gpio/export +-7             -> EINVAL
store class/gpio/export ++7             -> EINVAL
store class/gpio/export -               -> EINVAL
store class/gpio/export +               -> EINVAL
store class/gpio/export " 7"            -> EINVAL
store class/gpio/export "7\n\n"         -> EINVAL
store class/gpio/export 99999999999999999999x -> ERANGE
store class/gpio/export -99999999999999999999 -> ERANGE
store class/gpio/export -2147483649     -> ERANGE
store class/gpio/export -2147483648     -> EINVAL
store class/gpio/export 4294967295x     -> EINVAL
store class/gpio/export 0X7             -> ok
store class/gpio/unexport 007           -> ok
store class/gpio/export +7              -> ok
store class/gpio/unexport "07\n"        -> ok
store class/gpio/export -0              -> ok
store class/gpio/unexport 0             -> ok
store class/pwm/pwmchip0/export -0      -> EINVAL
store class/pwm/pwmchip0/export +0      -> ok
store class/pwm/pwmchip0/unexport 0x0   -> ok
)";
