# Builds for ARM64 Linux on another machine, tests run under qemu. Takes headers and libraries from
# the folder VORUND_SYSROOT (scripts/make_arm64_sysroot makes one).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# CMake's own trial builds read this file again and are to know the folder.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VORUND_SYSROOT)
if(NOT IS_DIRECTORY "${VORUND_SYSROOT}")
  message(FATAL_ERROR "VORUND_SYSROOT is no folder: '${VORUND_SYSROOT}'")
endif()
set(CMAKE_SYSROOT ${VORUND_SYSROOT})
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(ENV{PKG_CONFIG_SYSROOT_DIR} ${VORUND_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR}
  ${VORUND_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${VORUND_SYSROOT}/usr/share/pkgconfig)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static;-L;${VORUND_SYSROOT})
