#include "platform/linux/OsRelease.h"
#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace vornadel::test
{

namespace
{

struct Case {
    std::string text;
    unsigned major, minor, bugfix;
};

class OsReleaseTest : public testing::Test
{
protected:
    SystemVersionNumbers readText(const std::string& text)
    {
        return OsRelease({m_folder.write("os-release", text)}).read();
    }

    TemporaryFolder m_folder;
};

TEST_F(OsReleaseTest, ReadsOneTwoOrThreeNumbers)
{
    const std::vector<Case> cases{
        {"VERSION_ID=\"12\"\n", 12, 0, 0},
        {"VERSION_ID=\"22.04\"\n", 22, 4, 0},
        {"VERSION_ID='3.18.4'\n", 3, 18, 4},
        {"VERSION_ID=39", 39, 0, 0},
        {"VERSION_ID=\"10.10.5\"\r\n", 10, 10, 5},
        {"  VERSION_ID=8.9  \n", 8, 9, 0},
        {"NAME=\"x\"\nPRETTY_NAME=\"VERSION_ID=1\"\nVERSION=\"13 (y)\"\nVERSION_ID=\"7\"\nID=z\n",
         7, 0, 0},
        {"#VERSION_ID=1\nVERSION_ID=2\n", 2, 0, 0},
        {"VERSION_ID=1\nVERSION_ID=2\n", 2, 0, 0},
        {"VERSION_ID=1.2.3.4\n", 1, 2, 3},
        {"VERSION_ID=4294967295.0.1\n", 4294967295U, 0, 1},
    };
    for (const Case& expected : cases) {
        const SystemVersionNumbers version = readText(expected.text);
        EXPECT_EQ(version.error, 0) << expected.text;
        EXPECT_EQ(version.major, expected.major) << expected.text;
        EXPECT_EQ(version.minor, expected.minor) << expected.text;
        EXPECT_EQ(version.bugfix, expected.bugfix) << expected.text;
    }
}

TEST_F(OsReleaseTest, RefusesWhatIsNoVersionInNumbers)
{
    const std::vector<std::string> values{"",    "\"\"", "sid",      "12~beta", "12.",
                                          ".12", "1..2", "-1",       "+1",      "4294967296",
                                          "1 2", "\"12", "12 # old", "0x12",    "\"'1'\""};
    for (const std::string& value : values) {
        const SystemVersionNumbers version = readText("VERSION_ID=" + value + "\n");
        EXPECT_EQ(version.error, EINVAL) << value;
    }
}

TEST_F(OsReleaseTest, MissesTheKey)
{
    EXPECT_EQ(readText("NAME=\"x\"\nVERSION=\"12\"\nversion_id=12\nXVERSION_ID=12\n").error,
              ENOENT);
    EXPECT_EQ(readText("").error, ENOENT);
}

TEST_F(OsReleaseTest, TakesTheSecondFileOnlyWhenTheFirstCannotBeRead)
{
    const std::string usual = m_folder.write("usual", "VERSION_ID=1\n");
    const std::string vendor = m_folder.write("vendor", "VERSION_ID=2\n");
    EXPECT_EQ(OsRelease({usual, vendor}).read().major, 1U);
    EXPECT_EQ(OsRelease({m_folder.path("none"), vendor}).read().major, 2U);
    const std::string keyless = m_folder.write("keyless", "NAME=x\n");
    EXPECT_EQ(OsRelease({keyless, vendor}).read().error, ENOENT);
}

TEST_F(OsReleaseTest, TellsWhyNoFileCanBeRead)
{
    EXPECT_EQ(OsRelease({m_folder.path("none")}).read().error, ENOENT);
    EXPECT_EQ(OsRelease({m_folder.path("")}).read().error, EISDIR);
    const std::string pipe = m_folder.path("pipe"); // opening it to read would block
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(OsRelease({pipe}).read().error, EINVAL);
    EXPECT_EQ(OsRelease(std::vector<std::string>{}).read().error, ENOENT);
}

TEST_F(OsReleaseTest, SurvivesHostileFiles)
{
    std::string binary(10000, '\0');
    for (std::size_t i = 0; i < binary.size(); ++i) {
        binary[i] = static_cast<char>(i * 31 + i / 256);
    }
    EXPECT_NE(readText(binary).error, 0);
    EXPECT_EQ(readText(std::string(5, '\0') + "\nVERSION_ID=12\n").major, 12U);
    EXPECT_EQ(readText(std::string("VERSION_ID=1\0002\n", 15)).error, EINVAL);
    EXPECT_EQ(readText(std::string(2000, 'x') + "\nVERSION_ID=12\n").major, 12U);
    EXPECT_EQ(readText("VERSION_ID=" + std::string(2000, '1') + "\n").error, EINVAL);
    EXPECT_EQ(readText("VERSION_ID=12\n" + std::string(3'000'000, 'x')).error, EFBIG);
}

} // namespace

} // namespace vornadel::test
