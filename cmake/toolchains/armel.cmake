# Debian's cross compiler for 32-bit ARM without a floating-point unit. Libraries come from Debian's foreign
# architecture armel, whose paths the compiler itself knows.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv5tel)
set(CMAKE_CXX_COMPILER arm-linux-gnueabi-g++)
