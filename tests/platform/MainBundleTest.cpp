#include "platform/MainBundle.h"
#include "platform/linux/ExecutableBundle.h"

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

void expectBundle(const fs::path& executable, const std::string& path, bool bundled)
{
    const MainBundle bundle = bundleAround(executable);
    EXPECT_EQ(bundle.path, path) << executable;
    EXPECT_EQ(bundle.bundled, bundled) << executable;
}

TEST(MainBundle, IsTheBundleAroundTheProgram)
{
    expectBundle("/opt/Vornadel.app/Contents/MacOS/Vornadel", "/opt/Vornadel.app", true);
    expectBundle("/a b/M\xC3\xBCller.app/Contents/MacOS/x", "/a b/M\xC3\xBCller.app", true);
}

TEST(MainBundle, IsTheProgramsFolderOutsideABundle)
{
    expectBundle("/usr/bin/Vornadel", "/usr/bin", false);
    expectBundle("/opt/Vornadel.app/Vornadel", "/opt/Vornadel.app", false);
    expectBundle("/opt/Vornadel.app/Contents/Vornadel", "/opt/Vornadel.app/Contents", false);
    expectBundle("/opt/Vornadel.app/Contents/bin/Vornadel", "/opt/Vornadel.app/Contents/bin",
                 false);
    expectBundle("/opt/V.app.d/Contents/MacOS/Vornadel", "/opt/V.app.d/Contents/MacOS", false);
    expectBundle("/opt/Vornadel/Contents/MacOS/Vornadel", "/opt/Vornadel/Contents/MacOS", false);
    expectBundle("/opt/Vornadel.app/contents/MacOS/Vornadel", "/opt/Vornadel.app/contents/MacOS",
                 false);
}

TEST(ExecutableBundle, IsThisProgramsOwn)
{
    const fs::path own = fs::canonical("/proc/self/exe").parent_path();
    EXPECT_EQ(executableBundle("somewhere/else").path, own.string());
    EXPECT_EQ(executableBundle(nullptr).path, own.string());
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
        const MainBundle bundle = executableBundle("x");
        std::ofstream(answer) << bundle.path << '|' << bundle.bundled << '\n';
    }
}

TEST(ExecutableBundle, IsTheRealOneWhenStartedByALink)
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
