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
    std::vector<std::string> mayUseOutside; ///< CMake targets of libraries from outside
};

/// What is wrong with the #include lines of a source tree. One entry per line that is wrong, in the
/// order of the files' names, as "hub/Some.cpp:12: what is wrong". Folders at the root that hold no
/// room are left alone.
std::vector<std::string> wrongIncludes(const std::filesystem::path& root,
                                       const std::vector<Room>& rooms);

/// Sources at the root of the tree, or in folders of it, that no room and none of the other known
/// folders (tests, benchmarks, examples, builds) accounts for.
std::vector<std::string> homelessSources(const std::filesystem::path& root,
                                         const std::vector<Room>& rooms);

/// Lines outside `platform/` that ask which system they are compiled for, as "hub/Some.cpp:12".
/// Tests and benchmarks count too.
std::vector<std::string> linesThatAskForTheSystem(const std::filesystem::path& root);

/// The source files of one room, from the root.
std::vector<std::string> sourcesOf(const std::filesystem::path& root,
                                   const std::vector<Room>& rooms, const std::string& room);

} // namespace vornadel::test
