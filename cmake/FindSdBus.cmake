# Finds the headers of systemd's D-Bus library, which is loaded at run time and not linked. Defines
# SdBus::Headers.

find_path(SdBus_INCLUDE_DIR NAMES systemd/sd-bus.h)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(SdBus REQUIRED_VARS SdBus_INCLUDE_DIR)

if(SdBus_FOUND AND NOT TARGET SdBus::Headers)
  add_library(SdBus::Headers INTERFACE IMPORTED)
  set_target_properties(SdBus::Headers PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${SdBus_INCLUDE_DIR}")
endif()
mark_as_advanced(SdBus_INCLUDE_DIR)
