#include "tests/kernel/contract/Contract.h"

// The PWM controller and its channels.
const char contract::kChannels[] = R"(
in /sys/class/pwm
stat .                                  -> dir 0755
list . pwmchip0                         -> there
stat pwmchip0                           -> dir 0755
lstat pwmchip0                          -> link 0777
stat pwmchip9                           -> ENOENT
d = open pwmchip0 rd                    -> ok
read d 16                               -> EISDIR
close d                                 -> ok
d = open pwmchip0 wr                    -> EISDIR
d = open pwmchip0 rd+nofollow           -> ELOOP

in /sys/class/pwm/pwmchip0
list . export                           -> there
list . npwm                             -> there
list . pwm0                             -> missing
show npwm                               -> "4\n"
stat npwm                               -> file 0444
stat export                             -> file 0200
stat unexport                           -> file 0200
store npwm 5                            -> open: EACCES
show export                             -> open: EACCES
d = open export rdwr                    -> EACCES
d = open pwm0/enable wr+creat+trunc     -> ENOENT
d = open pwm0 wr+creat+trunc            -> EACCES
mkdir pwm0                              -> EPERM
unlink export                           -> EPERM
rename export unexport                  -> EPERM
access npwm w                           -> ok
access npwm x                           -> EACCES

# Numbers of channels. What is no number at all fails otherwise than a channel that the chip lacks.
store unexport 0                        -> ENODEV
store unexport 4                        -> ENODEV
store unexport abc                      -> EINVAL
store export 4                          -> ENODEV
store export 4294967295                 -> ENODEV
store export 4294967296                 -> ERANGE
store export 99999999999999999999       -> ERANGE
store export -1                         -> EINVAL
store export :                          -> EINVAL
store export ""                         -> ok
store export "\n"                       -> EINVAL
store export "0 "                       -> EINVAL
store export 0x0                        -> ok
store export 0                          -> EBUSY
store export "0\n"                      -> EBUSY
stat pwm0                               -> dir 0755
lstat pwm0                              -> dir 0755
list . pwm0                             -> there
list pwm0 period                        -> there
list pwm0 duty_cycle                    -> there
list pwm0 enable                        -> there
list pwm0 polarity                      -> there
rmdir pwm0                              -> EPERM
unlink pwm0                             -> EISDIR
rename pwm0 pwm1                        -> EPERM
d = open pwm0 rd                        -> ok
read d 16                               -> EISDIR
close d                                 -> ok

# A fresh channel takes nothing but a period.
in /sys/class/pwm/pwmchip0/pwm0
stat period                             -> file 0644
stat duty_cycle                         -> file 0644
stat enable                             -> file 0644
stat polarity                           -> file 0644
stat capture                            -> file 0444
size period                             -> 4096
show period                             -> "0\n"
show duty_cycle                         -> "0\n"
show enable                             -> "0\n"
show polarity                           -> "normal\n"
show capture                            -> ENOSYS
store capture 1                         -> open: EACCES
store duty_cycle 0                      -> EINVAL
store duty_cycle 1                      -> EINVAL
store enable 0                          -> EINVAL
store enable 1                          -> EINVAL
store polarity normal                   -> EINVAL
store polarity inversed                 -> EINVAL
store period 0                          -> EINVAL
stream duty_cycle 0                     -> no flush
stream enable 0                         -> no flush
d = open pwm wr+creat+trunc             -> EACCES
d = open pwm wr                         -> ENOENT
stream pwm 1                            -> no stream

# period: nanoseconds, not below the duty cycle.
store period 1000000                    -> ok
show period                             -> "1000000\n"
store period 0                          -> EINVAL
store period -1                         -> EINVAL
store period abc                        -> EINVAL
store period 1e6                        -> EINVAL
store period "1000 "                    -> EINVAL
store period ""                         -> ok
store period "\n"                       -> EINVAL
store period 99999999999999999999       -> ERANGE
show period                             -> "1000000\n"
store period 5000000000                 -> ok
show period                             -> "5000000000\n"
store period 0x1000                     -> ok
show period                             -> "4096\n"
store period "2000000\n"                -> ok
store period +1000000                   -> ok
show period                             -> "1000000\n"

# duty_cycle: nanoseconds, not above the period.
store duty_cycle 250000                 -> ok
show duty_cycle                         -> "250000\n"
store duty_cycle 1000000                -> ok
store duty_cycle 1000001                -> EINVAL
store duty_cycle -1                     -> EINVAL
store duty_cycle 0.5                    -> EINVAL
store duty_cycle 4294967296             -> EINVAL
store duty_cycle 18446744073709551616   -> ERANGE
show duty_cycle                         -> "1000000\n"
store period 5000000000                 -> ok
store duty_cycle 4500000000             -> ok
show duty_cycle                         -> "4500000000\n"
store period 4294967296                 -> EINVAL
store duty_cycle 1000000                -> ok
store period 1000000                    -> ok
store period 999999                     -> EINVAL
show period                             -> "1000000\n"
store duty_cycle 0                      -> ok
store duty_cycle "300000\n"             -> ok

# enable: 0 or 1 and no other word.
store enable 2                          -> EINVAL
store enable true                       -> EINVAL
store enable on                         -> EINVAL
store enable -1                         -> EINVAL
store enable 99999999999                -> ERANGE
store enable ""                         -> ok
show enable                             -> "0\n"
store enable 0                          -> ok
store enable 1                          -> ok
show enable                             -> "1\n"
store enable 1                          -> ok
store period 2000000                    -> ok
store duty_cycle 600000                 -> ok
show enable                             -> "1\n"

# polarity
store polarity upside                   -> EINVAL
store polarity ""                       -> ok
store polarity "normal\n"               -> ok
show polarity                           -> "normal\n"
store polarity inversed                 -> ok
show polarity                           -> "inversed\n"
show enable                             -> "1\n"
store polarity Normal                   -> EINVAL
store polarity normal                   -> ok

# A place in the file, as in every attribute.
d = open period rdwr                    -> ok
read d 4                                -> "2000"
read d 16                               -> "000\n"
read d 16                               -> ""
lseek d 0 set                           -> 0
write d 3000000                         -> 7
read d 16                               -> "\n"
lseek d 0 set                           -> 0
read d 16                               -> "3000000\n"
pread d 16 3                            -> "0000\n"
write d 3                               -> EINVAL
lseek d 0 end                           -> 4096
poll d pri 0                            -> nothing
poll d in+out 0                         -> in+out
m = mmap d read+shared 4096 0           -> ENODEV
ioctl d 0x5401 0                        -> ENOTTY

# Unexported while it runs, it goes on, and shows what it was when it comes back.
store /sys/class/pwm/pwmchip0/unexport 0 -> ok
lseek d 0 set                           -> 0
read d 16                               -> ENODEV
write d 3000000                         -> ENODEV
poll d pri 0                            -> pri+err
close d                                 -> ok
stat period                             -> ENOENT
d = open period wr+creat+trunc          -> ENOENT
store /sys/class/pwm/pwmchip0/unexport 0 -> ENODEV
store /sys/class/pwm/pwmchip0/export 0  -> ok
show period                             -> "3000000\n"
show duty_cycle                         -> "600000\n"
show enable                             -> "1\n"
store enable 0                          -> ok
store enable 1                          -> ok
store enable 0                          -> ok
store duty_cycle 0                      -> ok
store /sys/class/pwm/pwmchip0/unexport "0\n" -> ok

# Each write is a store of its own.
in /sys/class/pwm/pwmchip0
d = open export wr                      -> ok
write d 2                               -> 1
write d 3                               -> 1
write d 3                               -> EBUSY
pwrite d 2 1                            -> EBUSY
close d                                 -> ok
stat pwm2                               -> dir 0755
stat pwm3                               -> dir 0755
stat pwm23                              -> ENOENT
store unexport 2                        -> ok
store unexport 3                        -> ok
stat pwm3                               -> ENOENT
)";
