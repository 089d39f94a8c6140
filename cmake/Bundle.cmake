# The layout of the bundle is the same on every system: programs in Contents/MacOS, the files that
# they read in Contents/Resources. On a Mac an Info.plist and an icon make it an application.
set(VORNADEL_TOOL_DIRECTORY "${CMAKE_BINARY_DIR}")
set(VORNADEL_BUNDLE "${VORNADEL_TOOL_DIRECTORY}/Vornadel.app")
if(APPLE)
  set(VORNADEL_SYSTEM macos)
else()
  set(VORNADEL_SYSTEM linux)
endif()

function(vornadel_into_bundle program)
  set_target_properties(${program} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "${VORNADEL_BUNDLE}/Contents/MacOS")
  add_dependencies(${program} bundle_resources)
endfunction()

# vornadel_bundle_resources(STAMP BUNDLE SYSTEM): copies the resources for a system, linux or macos,
# into the bundle: the shared files, the system's own, and the manual with the pages that it links
# to. A target that depends on the file STAMP keeps them up to date.
function(vornadel_bundle_resources stamp bundle system)
  set(resources "${PROJECT_SOURCE_DIR}/resources")
  file(GLOB shared CONFIGURE_DEPENDS LIST_DIRECTORIES false "${resources}/*")
  file(GLOB_RECURSE own CONFIGURE_DEPENDS "${resources}/${system}/*")
  list(APPEND shared "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CONTRIBUTING.md"
    "${PROJECT_SOURCE_DIR}/LICENSE")
  file(GLOB pages CONFIGURE_DEPENDS LIST_DIRECTORIES false "${PROJECT_SOURCE_DIR}/docs/*")
  set(application "")
  if(system STREQUAL "macos")
    set(minimum_system "${CMAKE_OSX_DEPLOYMENT_TARGET}")
    configure_file("${PROJECT_SOURCE_DIR}/packaging/macos/Info.plist.in" "${stamp}.plist" @ONLY)
    set(icon "${PROJECT_SOURCE_DIR}/packaging/macos/Vornadel.icns")
    list(APPEND shared "${icon}")
    list(APPEND own "${stamp}.plist")
    set(application COMMAND "${CMAKE_COMMAND}" -E copy "${stamp}.plist" "${bundle}/Contents/Info.plist")
  endif()
  add_custom_command(
    OUTPUT "${stamp}"
    COMMAND "${CMAKE_COMMAND}" -E copy_directory "${resources}/${system}" "${bundle}/Contents/Resources"
    COMMAND "${CMAKE_COMMAND}" -E copy ${shared} "${bundle}/Contents/Resources"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${bundle}/Contents/Resources/docs"
    COMMAND "${CMAKE_COMMAND}" -E copy ${pages} "${bundle}/Contents/Resources/docs"
    ${application}
    COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}"
    DEPENDS ${shared} ${own} ${pages})
endfunction()
