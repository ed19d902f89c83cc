# SPDX-License-Identifier: MIT
# In two components: program and development.
include(CMakePackageConfigHelpers)

set(CORVANE_ZSH_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
    CACHE STRING "Folder for the zsh completion; Debian packages use vendor-completions")

install(TARGETS corvane-wifi COMPONENT program)
install(FILES man/corvane-wifi.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
install(FILES completions/corvane-wifi.bash RENAME corvane-wifi
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
install(FILES completions/_corvane-wifi DESTINATION ${CORVANE_ZSH_COMPLETIONS} COMPONENT program)
install(FILES completions/corvane-wifi.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT program)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} USE_SOURCE_PERMISSIONS
        COMPONENT program)
install(DIRECTORY schema DESTINATION ${CMAKE_INSTALL_DATADIR}/corvane-wifi COMPONENT program)
install(FILES LICENSE README.md CHANGELOG.md docs/setup.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT program)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/cvn-wifi)
write_basic_package_version_file(cvn-wifi-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES packaging/cvn-wifi-config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/cvn-wifi-config-version.cmake
        DESTINATION ${package_dir} COMPONENT development)
install(TARGETS cvn-wifi EXPORT cvn-wifi COMPONENT development)
install(EXPORT cvn-wifi NAMESPACE cvn:: FILE cvn-wifi-targets.cmake
        DESTINATION ${package_dir} COMPONENT development)
install(FILES include/cvn/wifi.hpp
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/cvn COMPONENT development)

# The prefix may be set only at `cmake --install`, so it is derived from the file's location, unless
# the library directory is absolute.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH up "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" /prefix)
  cmake_path(APPEND pc_prefix "\${pcfiledir}" "${up}")
endif()
# An absolute directory takes the place of what it is appended to.
cmake_path(APPEND pc_includedir "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
cmake_path(APPEND pc_libdir "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
configure_file(packaging/cvn-wifi.pc.in cvn-wifi.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/cvn-wifi.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
