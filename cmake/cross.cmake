# SPDX-License-Identifier: MIT
# Toolchain of ./run cross: Debian's cross compiler for the architecture ZVIPTV_CROSS, the libraries of that architecture
# in ZVIPTV_SYSROOT (packaging/cross/sysroot.sh makes it), and QEMU to run the built programs, if this machine
# cannot.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ZVIPTV_CROSS ZVIPTV_SYSROOT)

if(ZVIPTV_CROSS STREQUAL "armhf")
    set(CMAKE_SYSTEM_PROCESSOR arm)
    set(cross_compiler arm-linux-gnueabihf)
    set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
elseif(ZVIPTV_CROSS STREQUAL "arm64")
    set(CMAKE_SYSTEM_PROCESSOR aarch64)
    set(cross_compiler aarch64-linux-gnu)
    set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
elseif(ZVIPTV_CROSS STREQUAL "i386")
    set(CMAKE_SYSTEM_PROCESSOR i386)
    set(cross_compiler i686-linux-gnu)
    set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
else()
    message(FATAL_ERROR "Unknown architecture '${ZVIPTV_CROSS}': set ZVIPTV_CROSS to armhf, arm64 or i386")
endif()

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${cross_compiler}-gcc)
set(CMAKE_CXX_COMPILER ${cross_compiler}-g++)
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi) # a note that older compilers passed arguments differently
set(CMAKE_SYSROOT "${ZVIPTV_SYSROOT}")
if(ZVIPTV_CROSS STREQUAL "i386" AND CMAKE_HOST_SYSTEM_PROCESSOR STREQUAL "x86_64")
    # An RPATH, which also applies to the libraries of the sysroot, unlike a RUNPATH.
    string(CONCAT CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,--dynamic-linker=${ZVIPTV_SYSROOT}/lib/ld-linux.so.2"
        ",--disable-new-dtags,-rpath,${ZVIPTV_SYSROOT}/lib/${CMAKE_LIBRARY_ARCHITECTURE}"
        ",-rpath,${ZVIPTV_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}")
else()
    set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${CMAKE_SYSTEM_PROCESSOR}-static -L "${ZVIPTV_SYSROOT}")
endif()

# Programs come from this machine, everything else from the sysroot.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${ZVIPTV_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR}
    "${ZVIPTV_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/pkgconfig:${ZVIPTV_SYSROOT}/usr/share/pkgconfig")
