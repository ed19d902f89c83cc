# SPDX-License-Identifier: MIT
# Toolchain file of release/static-binary, for Qt and for the program. Native builds use it, too:
# only where CMAKE_SYSTEM_NAME is set does Qt take its tools from the build machine.
include("${CMAKE_CURRENT_LIST_DIR}/cross.cmake")

# The prefix map keeps the path of the build folder out of the binary.
cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH tree)
set(flags "-fno-pie -ffunction-sections -fdata-sections -ffile-prefix-map='${tree}'=.")
string(APPEND flags " -fstack-protector-strong -D_FORTIFY_SOURCE=2")
set(CMAKE_C_FLAGS_INIT "${flags}")
set(CMAKE_CXX_FLAGS_INIT "${flags}")

# Not position-independent: armhf's C library has no start file for a static PIE, and nothing has to
# be relocated at start. Fewer segments and sections sorted by alignment mean fewer page faults.
set(CMAKE_POSITION_INDEPENDENT_CODE OFF)
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -no-pie -Wl,--gc-sections -Wl,-z,noseparate-code,-z,now")
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,--sort-section=alignment")

# A static program registers its unwind tables in a form that the first exception has to sort, which
# makes an error message a hundred times as expensive as the rest of the run. Here the linker adds a
# sorted table, and the weak reference to the registration is wrapped away.
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,--eh-frame-hdr,--wrap=__register_frame_info"
       ",--wrap=__deregister_frame_info")
