# Cross build for ARM hard-float Linux. KLOV_SYSROOT (variable or environment) names a folder with that system's files;
# without it they are looked for on this machine, where Debian's foreign packages put them. tools/armhf.sh uses this.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# Notes about calls between objects of compilers long gone.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

if(NOT KLOV_SYSROOT)
  set(KLOV_SYSROOT "$ENV{KLOV_SYSROOT}")
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm)
if(KLOV_SYSROOT)
  set(CMAKE_SYSROOT ${KLOV_SYSROOT})
  list(APPEND CMAKE_CROSSCOMPILING_EMULATOR -L ${KLOV_SYSROOT})
  # Compiler checks are projects of their own, which read this file again.
  list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KLOV_SYSROOT)
  set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
# pkg-config tells of the ARM system's libraries, never of this machine's.
set(ENV{PKG_CONFIG_LIBDIR} "${KLOV_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${KLOV_SYSROOT}/usr/share/pkgconfig")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${KLOV_SYSROOT}")
