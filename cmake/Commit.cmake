# VORNADEL_COMMIT and VORNADEL_COMMIT_DATE: the commit that is built. From git, or, in a source
# package, from the file that git archive has filled in. "unknown" if neither tells.

set(commit_file "${CMAKE_CURRENT_SOURCE_DIR}/packaging/commit")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${commit_file}")
set(told "")
if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/.git")
  find_program(GIT git)
  if(GIT)
    execute_process(COMMAND "${GIT}" log -1 --format=%h\ %cs
      WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}"
      OUTPUT_VARIABLE told OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    # Configures again after a commit.
    execute_process(COMMAND "${GIT}" rev-parse --git-path logs/HEAD
      WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}"
      OUTPUT_VARIABLE log OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    if(log)
      get_filename_component(log "${log}" ABSOLUTE)
      set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${log}")
    endif()
  endif()
else()
  file(STRINGS "${commit_file}" told LIMIT_COUNT 1)
endif()
if(told MATCHES "^([0-9a-f]+) ([0-9-]+)$")
  set(VORNADEL_COMMIT "${CMAKE_MATCH_1}")
  set(VORNADEL_COMMIT_DATE "${CMAKE_MATCH_2}")
else()
  set(VORNADEL_COMMIT unknown)
  set(VORNADEL_COMMIT_DATE 1970-01-01)
endif()
