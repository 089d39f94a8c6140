# Finds iniparser, which ships neither a CMake package nor a pkg-config file.
# Defines iniparser::iniparser.

find_path(iniparser_INCLUDE_DIR NAMES iniparser/iniparser.h)
find_library(iniparser_LIBRARY NAMES iniparser)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(iniparser REQUIRED_VARS iniparser_LIBRARY iniparser_INCLUDE_DIR)

if(iniparser_FOUND AND NOT TARGET iniparser::iniparser)
  add_library(iniparser::iniparser UNKNOWN IMPORTED)
  set_target_properties(iniparser::iniparser PROPERTIES
    IMPORTED_LOCATION "${iniparser_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${iniparser_INCLUDE_DIR}")
endif()
mark_as_advanced(iniparser_INCLUDE_DIR iniparser_LIBRARY)
