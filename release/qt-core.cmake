# SPDX-License-Identifier: MIT
# What release/static-binary builds of Qt. Qt's own build reads this after project().
set(BUILD_SHARED_LIBS OFF CACHE BOOL "")
set(FEATURE_optimize_size ON CACHE BOOL "")

foreach(feature IN ITEMS
        # Modules.
        concurrent dbus gui network sql testlib xml
        # Libraries of the build machine. Qt brings its own zlib and doubleconversion.
        glib icu journald lttng pcre2 syslog system_doubleconversion system_libb2 system_pcre2
        system_zlib zstd
        # Relocatable code and data, see static.cmake.
        reduce_relocations relocatable
        # Parts of Core that the program does not use.
        animation backtrace cborstreamwriter commandlineparser datetimeparser easingcurve
        filesystemwatcher future hijricalendar islamiccivilcalendar jalalicalendar library mimetype
        process proxymodel regularexpression settings sharedmemory systemsemaphore timezone
        translation xmlstream)
  set(FEATURE_${feature} OFF CACHE BOOL "")
endforeach()

# Qt's configuration requires this target even without regular expressions.
add_library(WrapPCRE2::WrapPCRE2 INTERFACE IMPORTED GLOBAL)

# Optimized for speed: printing a list as JSON takes 40 % more instructions without it.
set(core "${CMAKE_CURRENT_SOURCE_DIR}/src/corelib")
file(GLOB fast "${core}/serialization/qcbor*.cpp" "${core}/serialization/qjson*.cpp")
list(APPEND fast "${core}/text/qbytearray.cpp" "${core}/text/qstring.cpp"
     "${core}/text/qstringconverter.cpp" "${core}/tools/qarraydata.cpp")
cmake_language(DEFER CALL set_source_files_properties ${fast} TARGET_DIRECTORY Core
               PROPERTIES COMPILE_OPTIONS -O2 SKIP_PRECOMPILE_HEADERS ON)
