#include "props/PropertyFiles.h"
#include "tests/props/DefinitionFolder.h"
#include "tests/support/WithoutPrivilege.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vornadel::test
{
namespace
{

namespace fs = std::filesystem;

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

class PropertyFiles : public DefinitionFolder
{
protected:
    std::vector<std::string> found() const { return findPropertyFiles(m_folder.path()); }
};

TEST_F(PropertyFiles, HaveTheExtensionAtTheirEnd)
{
    for (const char* name :
         {"Ini.Ini", "x.INI.bak", "x.INIX", "xINI", ".INI", "INI", "x.", "x.INI ", "x.INI~"}) {
        write("", name);
    }
    EXPECT_THAT(found(), IsEmpty());
    write("", "two.dots.INI");
    write("", " a b .INI");
    write("", ".hidden.INI");
    write("", ".git/In a hidden folder.INI");
    EXPECT_THAT(found(), UnorderedElementsAre("two.dots.INI", " a b .INI", ".hidden.INI",
                                              ".git/In a hidden folder.INI"));
}

TEST_F(PropertyFiles, MayBeNone)
{
    EXPECT_THAT(found(), IsEmpty());
    EXPECT_THAT(findPropertyFiles(path("missing")), IsEmpty());
    EXPECT_THAT(findPropertyFiles(""), IsEmpty());
    write("", "A.INI");
    EXPECT_THAT(findPropertyFiles(path("A.INI")), IsEmpty());
}

TEST_F(PropertyFiles, ComeInTheOrderOfTheWalk)
{
    for (const char* name : {"z.INI", "m/k.INI", "m/inner/j.INI", "a.INI", "q/w.INI", "f.INI"}) {
        write("", name);
    }
    // The library's own walk also uses the order in which the system lists folders.
    std::vector<std::string> walked;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(m_folder.path())) {
        if (entry.path().extension() == ".INI") {
            walked.push_back(entry.path().lexically_relative(m_folder.path()).string());
        }
    }
    EXPECT_THAT(walked, SizeIs(6));
    EXPECT_EQ(found(), walked);
}

TEST_F(PropertyFiles, AreTakenByNameWhateverTheyAre)
{
    write("", "Folder.INI/Inside.INI");
    fs::create_symlink("nowhere", path("Dangling.INI"));
    ASSERT_EQ(mkfifo(path("Pipe.INI").c_str(), 0600), 0);
    EXPECT_THAT(found(), UnorderedElementsAre("Folder.INI", "Folder.INI/Inside.INI", "Dangling.INI",
                                              "Pipe.INI"));
}

TEST_F(PropertyFiles, AreNotLookedForBehindLinks)
{
    write("", "real/A.INI");
    fs::create_directory_symlink(m_folder.path(), path("real/back"));
    fs::create_directory_symlink("self", path("self"));
    fs::create_directory_symlink("real", path("other"));
    EXPECT_THAT(found(), ElementsAre("real/A.INI"));
    EXPECT_THAT(findPropertyFiles(path("other")), ElementsAre("A.INI"))
        << "it may be a link itself";
    fs::create_directory_symlink("real", path("definitions"));
    fs::create_directory_symlink(path("real"), path("local-definitions"));
    fs::create_directory_symlink(path("real"), path("real/definitions"));
    EXPECT_THAT(found(),
                UnorderedElementsAre("real/A.INI", "definitions/A.INI", "local-definitions/A.INI"))
        << "but an installed tool has two links";
}

TEST_F(PropertyFiles, BehindAClosedFolderStayUnseenAndTheRestIsFound)
{
    write("", "closed/A.INI");
    write("", "open/B.INI");
    write("", "C.INI");
    fs::permissions(path("closed"), fs::perms::none);
    {
        const WithoutPrivilege nobody;
        EXPECT_THAT(found(), UnorderedElementsAre("open/B.INI", "C.INI"));
    }
    fs::permissions(path("closed"), fs::perms::owner_all); // or it could not be removed
}

/// Creates nested folders, 300 deep; one at a time, because the whole path would be too long.
void makeDeepFolder(const fs::path& top, const std::string& name)
{
    const fs::path before = fs::current_path();
    fs::current_path(top);
    for (int depth = 0; depth < 300; ++depth) {
        ASSERT_EQ(mkdir(name.c_str(), 0700), 0);
        ASSERT_EQ(chdir(name.c_str()), 0);
    }
    std::ofstream("Deep.INI") << "";
    fs::current_path(before);
}

TEST_F(PropertyFiles, AreLookedForDownTo255FoldersDeep)
{
    std::string deepest;
    for (int depth = 0; depth < 255; ++depth) {
        deepest += "d/";
    }
    write("", deepest + "B.INI");
    write("", deepest + "d/C.INI");
    EXPECT_THAT(found(), UnorderedElementsAre(deepest + "B.INI"));
}

TEST_F(PropertyFiles, AreFoundWithFewDescriptorsLeft)
{
    makeDeepFolder(m_folder.path(), std::string(20, 'd'));
    write("", "A.INI");
    write("", "other/B.INI");
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit tight{40, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &tight), 0);
    const std::vector<std::string> files = found();
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_THAT(files, UnorderedElementsAre("A.INI", "other/B.INI"));
}

} // namespace
} // namespace vornadel::test
