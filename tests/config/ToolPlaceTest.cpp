#include "config/ToolPlace.h"

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

void expectPlace(const fs::path& executable, const std::string& bundle, bool bundled,
                 const std::string& resources)
{
    const ToolPlace place = toolPlaceOf(executable);
    EXPECT_EQ(place.bundlePath, bundle) << executable;
    EXPECT_EQ(place.bundled, bundled) << executable;
    EXPECT_EQ(place.resourcePath, resources) << executable;
}

TEST(ToolPlace, IsTheBundleAroundTheProgram)
{
    expectPlace("/opt/Vornadel.app/Contents/MacOS/Vornadel", "/opt/Vornadel.app", true,
                "/opt/Vornadel.app/Contents/Resources");
    expectPlace("/a b/M\xC3\xBCller.app/Contents/MacOS/x", "/a b/M\xC3\xBCller.app", true,
                "/a b/M\xC3\xBCller.app/Contents/Resources");
}

TEST(ToolPlace, IsTheProgramsFolderOutsideABundle)
{
    expectPlace("/usr/bin/Vornadel", "/usr/bin", false, "/usr/bin");
    expectPlace("/opt/Vornadel.app/Vornadel", "/opt/Vornadel.app", false, "/opt/Vornadel.app");
    expectPlace("/opt/Vornadel.app/Contents/Vornadel", "/opt/Vornadel.app/Contents", false,
                "/opt/Vornadel.app/Contents");
    expectPlace("/opt/Vornadel/Contents/MacOS/Vornadel", "/opt/Vornadel/Contents/MacOS", false,
                "/opt/Vornadel/Contents/MacOS");
    expectPlace("/opt/Vornadel.app/contents/MacOS/Vornadel", "/opt/Vornadel.app/contents/MacOS", false,
                "/opt/Vornadel.app/contents/MacOS");
}

TEST(ToolPlace, IsThisProgramsOwn)
{
    const fs::path own = fs::canonical("/proc/self/exe").parent_path();
    EXPECT_EQ(toolPlace("somewhere/else").resourcePath, own.string());
    EXPECT_EQ(toolPlace(nullptr).resourcePath, own.string());
}

/// The place that a copy of this program tells of itself when it is started by way of `link`.
std::string placeToldBy(const fs::path& link, const fs::path& answer)
{
    const std::string command = "VORNADEL_TELL_PLACE='" + answer.string() + "' '" + link.string() +
                                "' --gtest_filter='ToolPlaceTeller.*' >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    std::string line;
    std::ifstream file(answer);
    std::getline(file, line);
    return line;
}

TEST(ToolPlaceTeller, TellsItsPlaceWhenAsked)
{
    if (const char* answer = std::getenv("VORNADEL_TELL_PLACE")) {
        const ToolPlace place = toolPlace("x");
        std::ofstream(answer) << place.bundlePath << '|' << place.resourcePath << '\n';
    }
}

TEST(ToolPlace, IsTheRealOneWhenStartedByALink)
{
    std::string pattern = (fs::temp_directory_path() / "config_tests-XXXXXX").string();
    const fs::path directory = fs::canonical(mkdtemp(pattern.data()));
    const fs::path program = directory / "V.app/Contents/MacOS/V";
    fs::create_directories(program.parent_path());
    fs::create_directories(directory / "bin");
    fs::copy_file("/proc/self/exe", program);
    fs::create_symlink(program, directory / "bin/v");
    EXPECT_EQ(placeToldBy(directory / "bin/v", directory / "answer"),
              (directory / "V.app").string() + "|" + (directory / "V.app/Contents/Resources").string());
    fs::remove_all(directory);
}

} // namespace

} // namespace vornadel::test
