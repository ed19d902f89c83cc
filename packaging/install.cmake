# SPDX-License-Identifier: MIT
# In components: program, documentation, development and, if it is built, panel.
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
# By name or ending: editors leave copies, and a folder would keep the permissions of the checkout.
file(GLOB schemas CONFIGURE_DEPENDS schema/*.json)
install(FILES ${schemas} DESTINATION ${CMAKE_INSTALL_DATADIR}/corvane-wifi/schema
        COMPONENT program)
install(PROGRAMS examples/status-bar examples/wifi-menu
        DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT program)

# Everything that the README refers to, and what that refers to.
file(GLOB documents CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR}
     *.md docs/*.md docs/*.png docs/*.svg)
foreach(document IN LISTS documents ITEMS LICENSE examples/README.md release/README.md
        examples/without-blocking/CMakeLists.txt examples/without-blocking/main.cpp
        scripts/README.md)
  cmake_path(GET document PARENT_PATH folder)
  install(FILES ${document} DESTINATION ${CMAKE_INSTALL_DOCDIR}/${folder} COMPONENT documentation)
endforeach()

if(CORVANE_BUILD_PANEL)
  install(TARGETS corvane-wifi-panel COMPONENT panel)
  install(FILES man/corvane-wifi-panel.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT panel)
  install(FILES panel/corvane-wifi-panel.desktop
          DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT panel)
  install(FILES panel/corvane-wifi-panel.svg
          DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT panel)
  install(FILES panel/corvane-wifi-panel.metainfo.xml RENAME invalid.corvane_wifi.panel.metainfo.xml
          DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT panel)
endif()

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
