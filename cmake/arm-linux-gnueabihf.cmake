# Cross build for 32-bit ARM cameras (arm-linux-gnueabihf) on a Debian host.
#
# Uses the distribution's cross compiler (g++-arm-linux-gnueabihf) and the
# armhf builds of the libraries installed side by side with the host's
# (multiarch: headers in /usr/include, libraries in
# /usr/lib/arm-linux-gnueabihf). Programs built here run on the host under
# qemu-arm, so ctest and gtest_discover_tests work as on a native build.
#
#   cmake -S . -B build/arm -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux-gnueabihf.cmake

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(SENSOR_ARM_TRIPLET arm-linux-gnueabihf)
set(CMAKE_C_COMPILER ${SENSOR_ARM_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${SENSOR_ARM_TRIPLET}-g++)
# Makes find_library and find_package look in the armhf multiarch directories.
set(CMAKE_LIBRARY_ARCHITECTURE ${SENSOR_ARM_TRIPLET})

# pkg-config must describe the armhf libraries, never the host's.
set(ENV{PKG_CONFIG_LIBDIR} "/usr/lib/${SENSOR_ARM_TRIPLET}/pkgconfig:/usr/share/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")

# Libraries and headers come from the target's directories; programs run at
# build time (pkg-config, sh) are the host's.
set(CMAKE_FIND_ROOT_PATH /usr/${SENSOR_ARM_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# Tests and test discovery run the ARM programs through the user-mode
# emulator. It loads them with the multiarch armhf C and C++ runtimes
# (libc6:armhf, libstdc++6:armhf) found at the usual paths. No "-L" sysroot:
# qemu 7.2 with the cross toolchain's copy of the runtime crashes in the
# first thread a program starts.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm)
