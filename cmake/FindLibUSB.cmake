# Finds libusb 1.0 through pkg-config. Defines LibUSB::LibUSB.

find_package(PkgConfig REQUIRED)
pkg_check_modules(LibUSB_PC IMPORTED_TARGET GLOBAL libusb-1.0)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(LibUSB REQUIRED_VARS LibUSB_PC_FOUND VERSION_VAR LibUSB_PC_VERSION)

if(LibUSB_FOUND AND NOT TARGET LibUSB::LibUSB)
  add_library(LibUSB::LibUSB ALIAS PkgConfig::LibUSB_PC)
endif()
