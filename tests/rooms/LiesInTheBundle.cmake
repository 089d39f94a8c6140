# Fails unless the programs and config.ini lie in the bundle, and the property files beside it, where they look for each
# other.
set(expected "${BUNDLE}/Contents/MacOS/vornadelctl" "${BUNDLE}/Contents/Resources/config.ini"
  "${BUNDLE}/../SimHub-A.INI" "${BUNDLE}/../SimHub-B.INI")
if(WINDOW)
  list(APPEND expected "${BUNDLE}/Contents/MacOS/Vornadel")
endif()
foreach(file IN LISTS expected)
  if(NOT EXISTS "${file}" OR IS_DIRECTORY "${file}")
    message(FATAL_ERROR "${file} is missing")
  endif()
endforeach()
if(NOT PROGRAM STREQUAL "${BUNDLE}/Contents/MacOS/vornadelctl")
  message(FATAL_ERROR "${PROGRAM} is built outside the bundle")
endif()
