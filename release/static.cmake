# SPDX-License-Identifier: MIT
# Toolchain file of release/static-binary, for Qt and for the program. Native builds use it, too:
# only where CMAKE_SYSTEM_NAME is set does Qt take its tools from the build machine.
include("${CMAKE_CURRENT_LIST_DIR}/cross.cmake")

# The C library loads a program anywhere, except that armhf's has no start file for a static PIE.
# Packed relocations make the start cheaper. CMake itself would link a PIE that is not static.
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "arm")
  set(position_flags "-fno-pie")
  set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -no-pie")
else()
  set(position_flags "-fPIE")
  set(CMAKE_EXE_LINKER_FLAGS_INIT "-static-pie -Wl,-z,pack-relative-relocs")
endif()
set(CMAKE_POSITION_INDEPENDENT_CODE OFF)
set(CMAKE_CXX_LINK_PIE_SUPPORTED OFF)
set(CMAKE_CXX_LINK_NO_PIE_SUPPORTED OFF)

# The prefix map keeps the path of the build folder out of the binary.
cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH tree)
set(flags "${position_flags} -ffunction-sections -fdata-sections -ffile-prefix-map='${tree}'=.")
string(APPEND flags " -fstack-protector-strong -D_FORTIFY_SOURCE=2")
set(CMAKE_C_FLAGS_INIT "${flags}")
set(CMAKE_CXX_FLAGS_INIT "${flags}")

# Sections sorted by alignment mean fewer page faults.
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,--gc-sections -Wl,-z,separate-code,-z,now")
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,--sort-section=alignment")

# A static program registers its unwind tables in a form that the first exception has to sort, which
# makes an error message a hundred times as expensive as the rest of the run. Here the linker adds a
# sorted table, and the weak reference to the registration is wrapped away.
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,--eh-frame-hdr,--wrap=__register_frame_info"
       ",--wrap=__deregister_frame_info")
