#include "RoomTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vornadel::test
{
namespace
{

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSubsetOf;
using ::testing::Not;

/// The rooms whose row allows a library.
std::vector<std::string> usersOf(const std::string& library)
{
    std::vector<std::string> users;
    for (const Room& room : kRooms) {
        if (std::find(room.mayUseOutside.begin(), room.mayUseOutside.end(), library) !=
            room.mayUseOutside.end()) {
            users.push_back(room.name);
        }
    }
    return users;
}

const Room& roomNamed(const std::string& name)
{
    return *std::find_if(kRooms.begin(), kRooms.end(),
                         [&](const Room& room) { return room.name == name; });
}

TEST(RoomTable, KeepsLibrariesFromOutsideWhereTheyBelong)
{
    EXPECT_THAT(usersOf("LibUSB::LibUSB"), ElementsAre("platform_linux"));
    EXPECT_THAT(usersOf("MacOS::Interfaces"), ElementsAre("platform_macos"));
    EXPECT_THAT(usersOf("Qt6::Widgets"), IsSubsetOf({"app", "editor"}));
    EXPECT_THAT(usersOf("iniparser::iniparser"), IsSubsetOf({"config", "props"}));
    EXPECT_THAT(usersOf("Qt6::Widgets"), Contains("app"));
    EXPECT_THAT(usersOf("iniparser::iniparser"), Contains("config"));
}

TEST(RoomTable, KeepsTheSimulatedHubApartFromTheCodeItTests)
{
    EXPECT_THAT(roomNamed("sim").mayUse, ElementsAre("platform_api", "base"));
    EXPECT_THAT(roomNamed("virtual_hub").mayUse,
                ElementsAre("platform_api", "platform_posix", "sim"));
    for (const Room& room : kRooms) {
        if (room.name != "app" && room.name != "cli" && room.name != "virtual_hub") {
            EXPECT_THAT(room.mayUse, Not(Contains("sim"))) << room.name;
        }
    }
}

TEST(RoomTable, HasArrowsThatPointOneWay)
{
    // Repeatedly removes the rooms whose arrows all lead to removed rooms; a circle would remain.
    std::vector<Room> left = kRooms;
    std::vector<std::string> gone;
    for (std::size_t before = left.size() + 1; left.size() < before;) {
        before = left.size();
        std::erase_if(left, [&](const Room& room) {
            const bool free =
                std::all_of(room.mayUse.begin(), room.mayUse.end(), [&](const std::string& used) {
                    return std::find(gone.begin(), gone.end(), used) != gone.end();
                });
            if (free) {
                gone.push_back(room.name);
            }
            return free;
        });
    }
    EXPECT_TRUE(left.empty()) << "on a circle, or with an arrow to no room: " << left.front().name;
}

// Includes libraries that were linked without vornadel_room().
TEST(Links, OfEveryRoomStayInItsRow)
{
    ASSERT_THAT(kLinks, Not(IsEmpty()));
    for (const auto& [name, links] : kLinks) {
        std::vector<std::string> allowed = roomNamed(name).mayUse;
        const std::vector<std::string>& outside = roomNamed(name).mayUseOutside;
        allowed.insert(allowed.end(), outside.begin(), outside.end());
        EXPECT_THAT(links, IsSubsetOf(allowed)) << "room " << name;
    }
}

} // namespace
} // namespace vornadel::test
