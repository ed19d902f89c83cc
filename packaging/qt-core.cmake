# SPDX-License-Identifier: MIT
# What scripts/single-file leaves of Qt, read by Qt's own build after project().
set(BUILD_SHARED_LIBS OFF CACHE BOOL "")
set(FEATURE_optimize_size ON CACHE BOOL "")

foreach(feature IN ITEMS
        # Modules.
        concurrent dbus gui network sql testlib xml
        # Libraries of the build machine; Qt's own copies take the place of zlib and doubleconversion.
        glib icu journald lttng pcre2 syslog system_doubleconversion system_libb2 system_pcre2
        system_zlib zstd
        # Relocatable code and data, see static.cmake.
        reduce_relocations relocatable
        # Parts of Core that this program has no use for.
        animation backtrace cborstreamwriter commandlineparser datetimeparser easingcurve
        filesystemwatcher future hijricalendar islamiccivilcalendar jalalicalendar library mimetype
        process proxymodel regularexpression settings sharedmemory systemsemaphore timezone
        translation xmlstream)
  set(FEATURE_${feature} OFF CACHE BOOL "")
endforeach()

# Wanted by the configuration even where regular expressions are off.
add_library(WrapPCRE2::WrapPCRE2 INTERFACE IMPORTED GLOBAL)
