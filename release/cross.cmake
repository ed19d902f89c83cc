# SPDX-License-Identifier: MIT
# Toolchain file for Debian's compilers. Takes its parameters from the environment: what
# `dpkg-architecture -a ARCH -s` prints for any ARCH, and CORVANE_SYSROOT, a folder with libraries
# for ARCH and Qt's development files that scripts/unpack has made (none for a static program).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR $ENV{DEB_HOST_GNU_CPU})
set(CMAKE_C_COMPILER $ENV{DEB_HOST_GNU_TYPE}-gcc)
set(CMAKE_CXX_COMPILER $ENV{DEB_HOST_GNU_TYPE}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE $ENV{DEB_HOST_MULTIARCH})
set(CMAKE_FIND_ROOT_PATH "$ENV{CORVANE_SYSROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-Wl,-rpath-link,'$ENV{CORVANE_SYSROOT}/usr/lib/$ENV{DEB_HOST_MULTIARCH}'")
# Qt's tools run on the machine that builds.
set(QT_HOST_PATH /usr CACHE PATH "")
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/$ENV{DEB_BUILD_MULTIARCH}/cmake CACHE PATH "")
