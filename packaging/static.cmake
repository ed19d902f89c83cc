# SPDX-License-Identifier: MIT
# Toolchain of scripts/single-file, for Qt and for the program alike. A native build uses it too:
# only where CMAKE_SYSTEM_NAME is set does Qt take its tools from the build machine.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR $ENV{CORVANE_ARCH})
set(CMAKE_C_COMPILER $ENV{CORVANE_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER $ENV{CORVANE_TRIPLE}-g++)

# The prefix map keeps the build folder's name out of the file.
set(flags "-fno-pie -ffunction-sections -fdata-sections -ffile-prefix-map='$ENV{CORVANE_ROOT}'=.")
string(APPEND flags " -fstack-protector-strong -D_FORTIFY_SOURCE=2")
set(CMAKE_C_FLAGS_INIT "${flags}")
set(CMAKE_CXX_FLAGS_INIT "${flags}")

# No position independence: armhf's C library has no start file for it in a static program, and
# without it nothing is relocated at start. Fewer segments are fewer page faults, and sorted by
# alignment fewer pages are read.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -no-pie -Wl,--gc-sections -Wl,-z,noseparate-code,-z,now")
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,--sort-section=alignment")

# A static program registers its unwind tables as a heap that the first exception sorts, which costs
# an error message a hundred times what the rest does. Its weak call is led to nothing instead,
# and the linker adds a sorted table.
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,--eh-frame-hdr,--wrap=__register_frame_info"
       ",--wrap=__deregister_frame_info")
