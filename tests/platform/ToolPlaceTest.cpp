#include "platform/ToolPlace.h"

#include "platform/linux/LinuxToolPlace.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace vornadel::test
{

namespace
{

namespace fs = std::filesystem;

TEST(ToolPlace, IsTheBundleAroundTheProgram)
{
    for (const std::string bundle :
         {"/opt/Vornadel.app", "/a b/M\xC3\xBCller.app", "/opt/Vornadel", "/opt/V.app.d"}) {
        const ToolPlace place = toolPlaceOf(bundle + "/Contents/MacOS/Vornadel");
        EXPECT_TRUE(place.bundled) << bundle;
        EXPECT_EQ(place.bundlePath, bundle);
        EXPECT_EQ(place.resourcePath, bundle + "/Contents/Resources");
    }
}

TEST(ToolPlace, IsTheProgramsFolderOutsideABundle)
{
    for (const std::string folder :
         {"/usr/bin", "/opt/Vornadel.app", "/opt/Vornadel.app/Contents",
          "/opt/Vornadel.app/Contents/bin", "/opt/Vornadel.app/contents/MacOS"}) {
        const ToolPlace place = toolPlaceOf(folder + "/Vornadel");
        EXPECT_FALSE(place.bundled) << folder;
        EXPECT_EQ(place.bundlePath, folder);
        EXPECT_EQ(place.resourcePath, folder);
    }
}

TEST(LinuxToolPlace, IsThisProgramsOwn)
{
    const fs::path own = fs::canonical("/proc/self/exe").parent_path();
    EXPECT_EQ(linuxToolPlace("somewhere/else").bundlePath, own.string());
    EXPECT_EQ(linuxToolPlace(nullptr).bundlePath, own.string());
}

} // namespace

} // namespace vornadel::test
