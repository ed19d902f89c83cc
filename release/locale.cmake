# SPDX-License-Identifier: MIT
# Links locale.cpp into the program; read by the program's own build after project().
set(source "${CMAKE_CURRENT_LIST_DIR}/locale.cpp")
cmake_language(DEFER CALL target_sources corvane-wifi PRIVATE "${source}")
cmake_language(DEFER CALL target_link_options corvane-wifi PRIVATE -Wl,--wrap=setlocale)
