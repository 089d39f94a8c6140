# Looks for window libraries among those that PROGRAM needs, directly or indirectly. Fails if it finds one;
# with SEEN, if it finds none.
execute_process(COMMAND ldd "${PROGRAM}" RESULT_VARIABLE status OUTPUT_VARIABLE libraries)
if(NOT status EQUAL 0 OR NOT libraries MATCHES "libc\\.so")
  message(FATAL_ERROR "ldd tells nothing about ${PROGRAM}: ${libraries}")
endif()
string(REGEX MATCHALL "lib(Qt|GL|EGL|OpenGL|X|xcb|xkb|wayland|gtk|gdk)[^ \n]*" found "${libraries}")
list(REMOVE_DUPLICATES found)
if(found AND NOT SEEN)
  message(FATAL_ERROR "${PROGRAM} needs ${found}")
elseif(SEEN AND NOT found)
  message(FATAL_ERROR "${PROGRAM} needs libraries of a window, and none was seen")
endif()
