# What depends on the prefix, which may be chosen as late as cmake --install --prefix: where the
# configuration lies, and the paths in the polkit action. CMAKE_CURRENT_LIST_DIR is the source's
# cmake folder.

set(prefix "${CMAKE_INSTALL_PREFIX}")
set(root "$ENV{DESTDIR}")
set(resources "${prefix}/lib/vornadel/Vornadel.app/Contents/Resources")

# As GNUInstallDirs has it: /etc for /usr, /etc/opt/NAME for /opt/NAME.
if(prefix STREQUAL "/usr")
  set(etc /etc)
elseif(prefix MATCHES "^/opt/")
  set(etc "/etc${prefix}")
else()
  set(etc "${prefix}/etc")
endif()

# An administrator's file stays.
set(config "${etc}/vornadel/config.ini")
if(NOT EXISTS "${root}${config}")
  file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/../resources/config.ini" DESTINATION "${etc}/vornadel")
endif()
file(MAKE_DIRECTORY "${root}${etc}/vornadel/definitions")

function(link_to target folder name)
  file(RELATIVE_PATH relative "${folder}" "${target}")
  file(CREATE_LINK "${relative}" "${root}${folder}/${name}" SYMBOLIC)
  message(STATUS "Installing: ${root}${folder}/${name}")
endfunction()
link_to("${config}" "${resources}" config.ini)
link_to("${prefix}/share/vornadel/definitions" "${prefix}/lib/vornadel" definitions)
link_to("${etc}/vornadel/definitions" "${prefix}/lib/vornadel" local-definitions)

set(action org.vornadel.hub-access.policy)
file(READ "${CMAKE_CURRENT_LIST_DIR}/../resources/linux/${action}" text)
string(REGEX REPLACE "in /opt starts one of its three administrator scripts.*for a few minutes"
  "starts one of its three administrator\n     scripts. polkit remembers the password for a few minutes" text "${text}")
string(REPLACE "/opt/Vornadel.app/Contents/Resources" "${resources}" text "${text}")
file(MAKE_DIRECTORY "${root}${prefix}/share/polkit-1/actions")
file(WRITE "${root}${prefix}/share/polkit-1/actions/${action}" "${text}")
message(STATUS "Installing: ${root}${prefix}/share/polkit-1/actions/${action}")
