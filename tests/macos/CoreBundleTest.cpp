#include "platform/macos/CoreBundle.h"

#include "tests/macos/MacTest.h"

#include <string>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

class CoreBundleTest : public MacTest
{
};

TEST_F(CoreBundleTest, IsTheMainBundleByTheseCalls)
{
    mac.bundlePath = "/Applications/a b/Vornadel.app";
    const MainBundle bundle = coreBundle("unused");
    EXPECT_EQ(bundle.path, "/Applications/a b/Vornadel.app");
    EXPECT_TRUE(bundle.bundled);
    EXPECT_THAT(mac.calls(),
                ElementsAre("CFBundleGetMainBundle()", "CFBundleCopyBundleURL(main bundle)",
                            "CFURLGetFileSystemRepresentation(url 1, absolute)",
                            "CFRelease(url 1)"));
    EXPECT_THAT(mac.alive(), IsEmpty());
}

TEST_F(CoreBundleTest, IsTheProgramsFolderOutsideABundle)
{
    mac.bundlePath = "/usr/local/bin";
    EXPECT_EQ(coreBundle("").path, "/usr/local/bin");
    EXPECT_FALSE(coreBundle("").bundled);
}

TEST_F(CoreBundleTest, IsFoundByTheProgramsNameWhereTheSystemDoesNotTell)
{
    const char* const program = "/no/such/Vornadel.app/Contents/MacOS/Vornadel";
    EXPECT_EQ(coreBundle(program).path, "/no/such/Vornadel.app");
    mac.bundlePath = "/x";
    mac.bundleHasUrl = false;
    EXPECT_EQ(coreBundle(program).path, "/no/such/Vornadel.app");
    mac.bundleHasUrl = true;
    mac.urlHasPath = false;
    EXPECT_EQ(coreBundle(program).path, "/no/such/Vornadel.app");
    EXPECT_TRUE(coreBundle(program).bundled);
    EXPECT_THAT(mac.alive(), IsEmpty());
}

TEST_F(CoreBundleTest, LosesEverySlashAtItsEndButTheOnlyOne)
{
    for (const char* path : {"/Applications/Vornadel.app/", "/Applications/Vornadel.app///"}) {
        mac.bundlePath = path;
        EXPECT_EQ(coreBundle("").path, "/Applications/Vornadel.app") << path;
        EXPECT_TRUE(coreBundle("").bundled) << path;
    }
    for (const char* path : {"/", "///"}) {
        mac.bundlePath = path;
        EXPECT_EQ(coreBundle("/a/b").path, "/") << path;
    }
}

TEST_F(CoreBundleTest, IsABundleByItsExtensionOnly)
{
    for (const char* path : {"/a/Vornadelapp", "/a/Vornadel.app/bin", "/a/Vornadel.application"}) {
        mac.bundlePath = path;
        EXPECT_FALSE(coreBundle("").bundled) << path;
    }
}

TEST_F(CoreBundleTest, MayHaveALongPath)
{
    mac.bundlePath = "/" + std::string(4090, 'x') + ".app";
    EXPECT_EQ(coreBundle("/a/b").path, mac.bundlePath);
}

TEST_F(CoreBundleTest, SurvivesAProgramWithoutAName) { EXPECT_EQ(coreBundle(nullptr).path, ""); }

TEST_F(CoreBundleTest, IsNotCutShort)
{
    mac.bundlePath = "/" + std::string(5000, 'x') + ".app";
    EXPECT_EQ(coreBundle("/a/b").path, "/a");
}

} // namespace
} // namespace vornadel::test
