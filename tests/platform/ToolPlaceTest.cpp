#include "platform/ToolPlace.h"

#include "platform/linux/LinuxToolPlace.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
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

/// The bundle that a copy of this program tells of itself when it is started by way of `link`.
std::string bundleToldBy(const fs::path& link, const fs::path& answer)
{
    const std::string command = "VORNADEL_TELL_BUNDLE='" + answer.string() + "' '" + link.string() +
                                "' --gtest_filter='BundleTeller.*' >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    std::string line;
    std::ifstream file(answer);
    std::getline(file, line);
    return line;
}

TEST(BundleTeller, TellsItsBundleWhenAsked)
{
    if (const char* answer = std::getenv("VORNADEL_TELL_BUNDLE")) {
        const ToolPlace place = linuxToolPlace("x");
        std::ofstream(answer) << place.bundlePath << '|' << place.bundled << '\n';
    }
}

TEST(LinuxToolPlace, IsTheRealOneWhenStartedByALink)
{
    std::string pattern = (fs::temp_directory_path() / "platform_tests-XXXXXX").string();
    const fs::path directory = fs::canonical(mkdtemp(pattern.data()));
    const fs::path program = directory / "V.app/Contents/MacOS/V";
    fs::create_directories(program.parent_path());
    fs::create_directories(directory / "bin");
    fs::copy_file("/proc/self/exe", program);
    fs::create_symlink(program, directory / "bin/v");
    EXPECT_EQ(bundleToldBy(directory / "bin/v", directory / "answer"),
              (directory / "V.app").string() + "|1");
    fs::remove_all(directory);
}

} // namespace

} // namespace vornadel::test
