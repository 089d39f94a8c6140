# Configures one_room from scratch and compares the result with EXPECT.
file(REMOVE_RECURSE "${BUILD}")
execute_process(
  COMMAND "${CMAKE_COMMAND}" -S "${PROJECT}" -B "${BUILD}" -G "${GENERATOR}"
          "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DMODULES=${MODULES}" "-DROOM=${ROOM}" "-DLINKS=${LINKS}"
  RESULT_VARIABLE status OUTPUT_VARIABLE said ERROR_VARIABLE complained)
string(REGEX REPLACE "[ \n]+" " " complained "${complained}") # CMake breaks long messages into lines
message("${said}${complained}")

if(EXPECT STREQUAL "")
  if(NOT status EQUAL 0 OR NOT said MATCHES "was let through")
    message(FATAL_ERROR "The configure step should have passed; it ended with ${status}.")
  endif()
else()
  string(FIND "${complained}" "${EXPECT}" found)
  if(status EQUAL 0 OR found EQUAL -1 OR said MATCHES "was let through")
    message(FATAL_ERROR "The configure step should have stopped with \"${EXPECT}\"; it ended with ${status}.")
  endif()
endif()
