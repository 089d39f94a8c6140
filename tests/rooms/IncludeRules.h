#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vornadel::test
{

/// One row of the table in cmake/Rooms.cmake.
struct Room {
    std::string name;
    std::string folder;                     ///< from the source root
    std::vector<std::string> mayUse;        ///< names of rooms
    std::vector<std::string> mayUseOutside; ///< CMake targets of external libraries
};

/// The errors in the #include lines of a source tree. One entry per line, sorted by file name, for
/// example "hub/Some.cpp:12: what is wrong". Folders at the root without a room are skipped.
std::vector<std::string> wrongIncludes(const std::filesystem::path& root,
                                       const std::vector<Room>& rooms);

/// Sources that are neither in a room nor in another known folder (tests, benchmarks, examples,
/// builds).
std::vector<std::string> homelessSources(const std::filesystem::path& root,
                                         const std::vector<Room>& rooms);

/// Lines outside `platform/` that check for which system they are compiled, as "hub/Some.cpp:12".
/// Includes tests and benchmarks.
std::vector<std::string> linesThatAskForTheSystem(const std::filesystem::path& root);

/// The source files of one room, relative to the root.
std::vector<std::string> sourcesOf(const std::filesystem::path& root,
                                   const std::vector<Room>& rooms, const std::string& room);

} // namespace vornadel::test
