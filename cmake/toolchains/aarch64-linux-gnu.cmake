# Debian's cross compiler for 64-bit ARM, and qemu's user emulation to run what it makes. What the programs link
# comes from ZELWELD_ARM_SYSROOT, an absolute path: the folder of Debian packages that scripts/arm_sysroot.sh unpacks.
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ZELWELD_ARM_SYSROOT)

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_SYSROOT ${ZELWELD_ARM_SYSROOT})
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${ZELWELD_ARM_SYSROOT})

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CXX_FLAGS_INIT -Wno-psabi) # notes on what changed with GCC 10
# Libraries that OpenCV's libraries need in turn.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,-rpath-link,${ZELWELD_ARM_SYSROOT}/usr/lib/aarch64-linux-gnu")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${CMAKE_EXE_LINKER_FLAGS_INIT}")
