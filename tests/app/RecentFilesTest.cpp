#include "app/RecentFiles.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <qglobal.h>

#include <filesystem>
#include <string>
#include <vector>

#include <sys/stat.h>

namespace vornadel::test
{

namespace
{

using Panel = RecentFiles::Panel;
using Paths = std::vector<std::string>;

class SettingsFile : public testing::Test
{
protected:
    SettingsFile() { qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(m_folder.path())); }

    void write(const std::string& text) const { m_folder.write("vornadel/window.ini", text); }
    std::string path(const char* suffix = "") const
    {
        return m_folder.path("vornadel/window.ini") + suffix;
    }

private:
    const TemporaryFolder m_folder;
};

TEST_F(SettingsFile, KeepsEightImagesAndAFolderForEachPanel)
{
    RecentFiles before;
    EXPECT_EQ(before.images(), Paths{});
    EXPECT_EQ(before.folder(Panel::Save), "");
    for (const char name : std::string("abcdefghi")) {
        before.add(Panel::Update, std::string("/update/") + name, true);
    }
    before.add(Panel::Load, "/l\xFC, \"%41\"/=;c.bin", true);
    before.add(Panel::Update, "/update/h", true);
    before.add(Panel::Scalar, "/scalar/no image", false);

    RecentFiles after; // as at the next start
    EXPECT_EQ(after.images(),
              (Paths{"/update/h", "/l\xFC, \"%41\"/=;c.bin", "/update/i", "/update/g", "/update/f",
                     "/update/e", "/update/d", "/update/c"}));
    EXPECT_EQ(after.folder(Panel::Update), "/update/");
    EXPECT_EQ(after.folder(Panel::Scalar), "/scalar/");
    EXPECT_EQ(after.folder(Panel::Load), "/l\xFC, \"%41\"/");
    EXPECT_EQ(after.folder(Panel::Save), "/update/") << "that of the newest image";
}

TEST_F(SettingsFile, DoesNoHarmWhateverItContains)
{
    const std::string fine = "[RecentImages]\nPaths=/good, relative, /nul%00, /good, /%41, /" +
                             std::string(5000, 'x') + "\n[Folders]\nUpdate=relative\n";
    for (const std::string& text :
         {fine, std::string("\0\xFF[[]\n=\n%%%", 11),
          std::string("[RecentImages]\nPaths=@Variant(\\0\\0\\0\\b\\xff)")}) {
        write(text);
        RecentFiles files;
        for (const std::string& path : files.images()) {
            EXPECT_EQ(path.front(), '/');
            EXPECT_LT(path.size(), 4096U);
        }
        EXPECT_LE(files.images().size(), 8U);
        files.add(Panel::Load, "/new/image", true);
        EXPECT_EQ(files.images().front(), "/new/image");
    }
    write(fine);
    EXPECT_EQ(RecentFiles().images(), (Paths{"/good", "/A"}));
    write(fine + std::string(70000, '#'));
    EXPECT_EQ(RecentFiles().images(), Paths{}) << "too long";
}

TEST_F(SettingsFile, IsNotWaitedFor)
{
    RecentFiles().add(Panel::Load, "/old/image", true);
    RecentFiles files;
    for (const char* suffix : {"", ".lock"}) { // a pipe in the place of either would block
        std::filesystem::remove(path());
        ASSERT_EQ(::mkfifo(path(suffix).c_str(), 0600), 0);
        for (const char name : std::string("123456789")) {
            files.add(Panel::Load, std::string("/new/") + name, true);
        }
        EXPECT_EQ(files.images().front(), "/new/9") << "remembered all the same";
        EXPECT_EQ(files.images().size(), 8U);
        EXPECT_EQ(RecentFiles().images(), Paths{});
        std::filesystem::remove(path(suffix));
    }
}

TEST_F(SettingsFile, IsWrittenAgainAfterACrash)
{
    write("");
    const std::string lock = path(".lock");
    std::filesystem::copy_file(path(), lock);
    RecentFiles().add(Panel::Load, "/new/image", true);
    EXPECT_EQ(RecentFiles().images(), Paths{}) << "another window may be writing";
    std::filesystem::last_write_time(lock, std::filesystem::file_time_type::clock::now() -
                                               std::chrono::minutes(1));
    RecentFiles().add(Panel::Load, "/new/image", true);
    EXPECT_EQ(RecentFiles().images(), Paths{"/new/image"});
}

} // namespace

} // namespace vornadel::test
