# Fails unless the programs, config.ini, the manual, the administrator scripts and the driver bundle are in the bundle,
# and the property files beside it, where they look for each other.
set(expected "${BUNDLE}/Contents/MacOS/vornadelctl" "${BUNDLE}/Contents/Resources/config.ini"
  "${BUNDLE}/Contents/Resources/README.md" "${BUNDLE}/Contents/Resources/docs/cli.md"
  "${BUNDLE}/Contents/Resources/hub-access.sh" "${BUNDLE}/Contents/Resources/supported-ids.awk"
  "${BUNDLE}/Contents/Resources/HubUpdaterDriver.kext/hub-access.rules"
  "${BUNDLE}/Contents/Resources/HubUpdaterDriver.kext/README.txt"
  "${BUNDLE}/../SimHub-A.INI" "${BUNDLE}/../SimHub-B.INI")
if(WINDOW)
  list(APPEND expected "${BUNDLE}/Contents/MacOS/Vornadel")
endif()
foreach(file IN LISTS expected)
  if(NOT EXISTS "${file}" OR IS_DIRECTORY "${file}")
    message(FATAL_ERROR "${file} is missing")
  endif()
endforeach()
foreach(script IN ITEMS load unload reboot)
  execute_process(COMMAND test -x "${BUNDLE}/Contents/Resources/${script}" RESULT_VARIABLE failed)
  if(failed)
    message(FATAL_ERROR "${script} is missing, or cannot be run")
  endif()
endforeach()
if(NOT PROGRAM STREQUAL "${BUNDLE}/Contents/MacOS/vornadelctl")
  message(FATAL_ERROR "${PROGRAM} is built outside the bundle")
endif()
