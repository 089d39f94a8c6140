#include "platform/macos/MacToolPlace.h"

#include "tests/macos/MacTest.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <string>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

class MacToolPlaceTest : public MacTest
{
protected:
    /// A bundle of this name on the disk.
    std::string makeBundle(const std::string& name)
    {
        std::filesystem::create_directories(m_folder.path(name) + "/Contents/MacOS");
        return m_folder.path(name);
    }

    TemporaryFolder m_folder;
};

TEST_F(MacToolPlaceTest, IsTheMainBundleByTheseCalls)
{
    mac.bundlePath = makeBundle("a b");
    const ToolPlace place = macToolPlace("unused");
    EXPECT_EQ(place.bundlePath, mac.bundlePath);
    EXPECT_TRUE(place.bundled);
    EXPECT_EQ(place.resourcePath, *mac.bundlePath + "/Contents/Resources");
    EXPECT_THAT(mac.calls(),
                ElementsAre("CFBundleGetMainBundle()", "CFBundleCopyBundleURL(main bundle)",
                            "CFURLGetFileSystemRepresentation(url 1, absolute)",
                            "CFRelease(url 1)"));
    EXPECT_THAT(mac.alive(), IsEmpty());
}

TEST_F(MacToolPlaceTest, IsTheProgramsFolderOutsideABundle)
{
    mac.bundlePath = "/usr/local/bin";
    EXPECT_EQ(macToolPlace("").bundlePath, "/usr/local/bin");
    EXPECT_FALSE(macToolPlace("").bundled);
}

TEST_F(MacToolPlaceTest, IsFoundByTheProgramsNameWhereTheSystemDoesNotTell)
{
    const char* const program = "/no/such/Vornadel.app/Contents/MacOS/Vornadel";
    EXPECT_EQ(macToolPlace(program).bundlePath, "/no/such/Vornadel.app");
    mac.bundlePath = "/x";
    mac.bundleHasUrl = false;
    EXPECT_EQ(macToolPlace(program).bundlePath, "/no/such/Vornadel.app");
    mac.bundleHasUrl = true;
    mac.urlHasPath = false;
    EXPECT_EQ(macToolPlace(program).bundlePath, "/no/such/Vornadel.app");
    EXPECT_TRUE(macToolPlace(program).bundled);
    EXPECT_EQ(macToolPlace(nullptr).bundlePath, "");
    EXPECT_THAT(mac.alive(), IsEmpty());
}

TEST_F(MacToolPlaceTest, LosesEverySlashAtItsEndButTheOnlyOne)
{
    mac.bundlePath = "/usr/local/bin///";
    EXPECT_EQ(macToolPlace("").bundlePath, "/usr/local/bin");
    mac.bundlePath = "///";
    EXPECT_EQ(macToolPlace("/a/b").bundlePath, "/");
}

TEST_F(MacToolPlaceTest, IsNeverCutShort)
{
    mac.bundlePath = "/" + std::string(4090, 'x');
    EXPECT_EQ(macToolPlace("/a/b").bundlePath, mac.bundlePath);
    mac.bundlePath = "/" + std::string(5000, 'x');
    EXPECT_EQ(macToolPlace("/a/b").bundlePath, "/a");
}

} // namespace
} // namespace vornadel::test
