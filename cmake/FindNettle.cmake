# Finds nettle, the library of hash functions, through pkg-config. Defines Nettle::Nettle.

find_package(PkgConfig REQUIRED)
pkg_check_modules(Nettle_PC IMPORTED_TARGET GLOBAL nettle)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Nettle REQUIRED_VARS Nettle_PC_FOUND VERSION_VAR Nettle_PC_VERSION)

if(Nettle_FOUND AND NOT TARGET Nettle::Nettle)
  add_library(Nettle::Nettle ALIAS PkgConfig::Nettle_PC)
endif()
