#include "config/ToolPlace.h"

#include <gtest/gtest.h>

namespace vornadel::test
{
namespace
{

TEST(ToolPlace, HasItsResourcesInTheBundle)
{
    const ToolPlace place = toolPlaceOf({"/a b/M\xC3\xBCller.app", true});
    EXPECT_EQ(place.bundlePath, "/a b/M\xC3\xBCller.app");
    EXPECT_TRUE(place.bundled);
    EXPECT_EQ(place.resourcePath, "/a b/M\xC3\xBCller.app/Contents/Resources");
}

TEST(ToolPlace, HasItsResourcesBesideTheProgramOutsideABundle)
{
    const ToolPlace place = toolPlaceOf({"/opt/Vornadel.app", false});
    EXPECT_EQ(place.bundlePath, "/opt/Vornadel.app");
    EXPECT_FALSE(place.bundled);
    EXPECT_EQ(place.resourcePath, "/opt/Vornadel.app");
}

} // namespace
} // namespace vornadel::test
