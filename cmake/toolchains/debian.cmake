# Uses Debian's cross compilers, with the packages of the target in PROGKEYS_TARGET_ROOT.
set(CMAKE_SYSTEM_NAME Linux)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES PROGKEYS_TARGET_ROOT)
set(PROGKEYS_TARGET_ROOT "" CACHE PATH "The directory with the packages of the target")
if(NOT PROGKEYS_TARGET_ROOT OR NOT EXISTS "${PROGKEYS_TARGET_ROOT}/usr/include")
  message(FATAL_ERROR "PROGKEYS_TARGET_ROOT does not contain the packages of a target; scripts/maintain/cross unpacks them")
endif()

set(CMAKE_C_COMPILER ${PROGKEYS_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${PROGKEYS_TRIPLET}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${PROGKEYS_TRIPLET})
set(CMAKE_SYSROOT ${PROGKEYS_TARGET_ROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# pkg-config runs only while CMake configures, so these variables are not necessary at build time.
set(ENV{PKG_CONFIG_DIR} "")
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${PROGKEYS_TARGET_ROOT})
set(ENV{PKG_CONFIG_LIBDIR}
    ${PROGKEYS_TARGET_ROOT}/usr/lib/${PROGKEYS_TRIPLET}/pkgconfig:${PROGKEYS_TARGET_ROOT}/usr/share/pkgconfig)

# QEMU uses the kernel's names of architectures. It searches the root when a program opens a file, but
# not when it only checks for one. Therefore Qt needs the path of its plugins.
set(CMAKE_CROSSCOMPILING_EMULATOR
    qemu-${CMAKE_SYSTEM_PROCESSOR}-static -L ${PROGKEYS_TARGET_ROOT}
    -E QT_PLUGIN_PATH=${PROGKEYS_TARGET_ROOT}/usr/lib/${PROGKEYS_TRIPLET}/qt5/plugins)
