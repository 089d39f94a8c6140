# The rooms of the house and the arrows between them. A room is one folder and one library target;
# it may link only what its row allows. A link that is not in the row stops the configure step.
# docs/architecture.md shows the same table with the reasons; tests/rooms checks the #include lines
# against it.

set(VORNADEL_ROOMS
  platform_api platform_posix platform_linux platform_macos platform_native base sim props firmware
  editor hub config flows driver app cli virtual_hub)

set(ROOM_FOLDER_platform_api   platform)
set(ROOM_FOLDER_platform_posix platform/posix)
set(ROOM_FOLDER_platform_linux platform/linux)
set(ROOM_FOLDER_platform_macos platform/macos)
set(ROOM_FOLDER_platform_native platform/native)
set(ROOM_FOLDER_base           base)
set(ROOM_FOLDER_sim            standins/sim)
set(ROOM_FOLDER_props          props)
set(ROOM_FOLDER_editor         editor)
set(ROOM_FOLDER_firmware       firmware)
set(ROOM_FOLDER_hub            hub)
set(ROOM_FOLDER_config         config)
set(ROOM_FOLDER_driver         driver)
set(ROOM_FOLDER_flows          flows)
set(ROOM_FOLDER_app            app)
set(ROOM_FOLDER_cli            cli)
set(ROOM_FOLDER_virtual_hub    standins/virtual_hub)

set(ROOM_MAY_USE_platform_api   )
set(ROOM_MAY_USE_platform_posix platform_api)
set(ROOM_MAY_USE_platform_linux platform_api platform_posix)
set(ROOM_MAY_USE_platform_macos platform_api platform_posix)
set(ROOM_MAY_USE_platform_native platform_api platform_linux platform_macos)
set(ROOM_MAY_USE_base           )
set(ROOM_MAY_USE_sim            platform_api base)
set(ROOM_MAY_USE_props          base)
set(ROOM_MAY_USE_editor         props firmware base)
set(ROOM_MAY_USE_firmware       base)
set(ROOM_MAY_USE_hub            platform_api base)
set(ROOM_MAY_USE_config         hub base)
set(ROOM_MAY_USE_flows          hub firmware platform_api)
set(ROOM_MAY_USE_driver         hub base platform_api)
set(ROOM_MAY_USE_app            platform_api platform_posix platform_native base sim props editor firmware
                                hub config flows driver)
set(ROOM_MAY_USE_cli            platform_api platform_posix platform_native base sim props firmware
                                hub config flows driver)
set(ROOM_MAY_USE_virtual_hub    platform_api platform_posix sim)

# External libraries that a room may use.
set(ROOM_MAY_USE_OUTSIDE_platform_api   Threads::Threads)
set(ROOM_MAY_USE_OUTSIDE_platform_linux LibUSB::LibUSB SdBus::Headers Threads::Threads)
set(ROOM_MAY_USE_OUTSIDE_platform_macos MacOS::Interfaces)
set(ROOM_MAY_USE_OUTSIDE_sim            Threads::Threads)
set(ROOM_MAY_USE_OUTSIDE_props          iniparser::iniparser)
set(ROOM_MAY_USE_OUTSIDE_editor         Qt6::Widgets)
set(ROOM_MAY_USE_OUTSIDE_config         iniparser::iniparser CLI11::CLI11)
set(ROOM_MAY_USE_OUTSIDE_app            Qt6::Widgets Threads::Threads CLI11::CLI11)
set(ROOM_MAY_USE_OUTSIDE_cli            CLI11::CLI11 Nettle::Nettle nlohmann_json::nlohmann_json
                                        Threads::Threads)
set(ROOM_MAY_USE_OUTSIDE_virtual_hub    CLI11::CLI11 Threads::Threads)

# Sets warnings, sanitizers and the source root as include folder for one of our targets.
function(vornadel_target_defaults target)
  target_include_directories(${target} PUBLIC "${CMAKE_SOURCE_DIR}")
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
    -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
    $<$<BOOL:${VORNADEL_WARNINGS_ARE_ERRORS}>:-Werror>
    # A unity build includes the files, and g++ takes their anonymous namespaces for a header's.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wno-subobject-linkage>)
  if(VORNADEL_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${VORNADEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all
      # False positives of g++ 12 in the standard library.
      $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(${target} PUBLIC -fsanitize=${VORNADEL_SANITIZE})
  endif()
endfunction()

# vornadel_room(NAME SOURCES file... [LINKS target...])
function(vornadel_room room)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  if(NOT room IN_LIST VORNADEL_ROOMS)
    message(FATAL_ERROR "'${room}' is not a room of this house; see cmake/Rooms.cmake")
  endif()
  foreach(link IN LISTS ARG_LINKS)
    if(NOT link IN_LIST ROOM_MAY_USE_${room} AND NOT link IN_LIST ROOM_MAY_USE_OUTSIDE_${room})
      message(FATAL_ERROR "Room '${room}' may not use '${link}'; see cmake/Rooms.cmake")
    endif()
  endforeach()
  add_library(${room} STATIC ${ARG_SOURCES})
  target_link_libraries(${room} PUBLIC ${ARG_LINKS})
  vornadel_target_defaults(${room})
endfunction()
