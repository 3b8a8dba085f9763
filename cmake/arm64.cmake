# Cross-build for 64-bit Arm Linux with Debian's compiler, against packages that
# cmake/arm64-sysroot.sh unpacked; what was built runs under qemu's user-mode emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

get_filename_component(ORVEL_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build/arm64-sysroot" ABSOLUTE)
set(CMAKE_SYSROOT "${ORVEL_SYSROOT}")
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${ORVEL_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR}
    "${ORVEL_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${ORVEL_SYSROOT}/usr/share/pkgconfig")
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/arm64-run.sh")
# FFmpeg's own dependencies stand in folders that only the loader of a whole system knows.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,--allow-shlib-undefined")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-Wl,--allow-shlib-undefined")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-Wl,--allow-shlib-undefined")
