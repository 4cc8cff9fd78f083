# Debian's cross compiler for 32-bit ARM with hardware floating point. Libraries come from Debian's foreign
# architecture armhf, whose paths the compiler itself knows.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# Tests start processes that outlive each other: each test gets process numbers of its own, in which it takes
# up all orphans, because the emulator does not know how to ask for them.
set(CMAKE_CROSSCOMPILING_EMULATOR unshare --pid --fork --kill-child --mount-proc)
