# Builds for another machine, of which TQX_MACHINE_ROOT holds the libraries. Both are taken from the
# environment, which try_compile passes on.
set(machine $ENV{TQX_MACHINE})
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${machine})
set(CMAKE_SYSROOT $ENV{TQX_MACHINE_ROOT})
set(CMAKE_C_COMPILER ${machine}-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER ${machine}-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${machine} -L ${CMAKE_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR}
    ${CMAKE_SYSROOT}/usr/lib/${machine}-linux-gnu/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
