#include "config/ToolConfig.h"

#include "hub/SupportedIds.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WithoutPrivilege.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

namespace vornadel::test
{

namespace
{

namespace fs = std::filesystem;

class Configuration : public testing::Test
{
protected:
    Configuration()
    {
        SupportedIdList.fill({1, 9, 9, 9}); // entries that are not cleared show
    }

    std::string path() const { return m_folder.path("config.ini"); }

    ToolConfig read(const std::string& content)
    {
        m_folder.write("config.ini", content);
        return readFile();
    }

    /// Records the reader's messages.
    ToolConfig readFile()
    {
        testing::internal::CaptureStderr();
        ToolConfig config = readToolConfig(path());
        console = testing::internal::GetCapturedStderr();
        return config;
    }

    static ToolConfig ids(Configuration& self, const std::string& lines)
    {
        return self.read("[Support Vid Pid]\n" + lines);
    }

    static int validCount()
    {
        return static_cast<int>(
            std::count_if(SupportedIdList.begin(), SupportedIdList.end(),
                          [](const SupportedIdEntry& entry) { return entry.valid != 0; }));
    }

    /// An invalid entry is all zero.
    static void expectCleanRest()
    {
        for (const SupportedIdEntry& entry : SupportedIdList) {
            if (entry.valid != 1) {
                EXPECT_EQ(entry, SupportedIdEntry());
            }
        }
    }

    static void expectDefaults(const ToolConfig& config)
    {
        EXPECT_EQ(config.appTitle, "Vornadel");
        EXPECT_EQ(config.isScalarMode, 0);
        EXPECT_EQ(config.fwbinPath, "");
        EXPECT_EQ(validCount(), 0);
        expectCleanRest();
    }

    std::string console;
    const TemporaryFolder m_folder;
};

std::string triple(const std::string& index, const std::string& vid, const std::string& sspid,
                   const std::string& hspid)
{
    return "VID_" + index + " = " + vid + "\nSSPID_" + index + " = " + sspid + "\nHSPID_" + index +
           " = " + hspid + "\n";
}

TEST_F(Configuration, HoldsTheThreeSettings)
{
    const ToolConfig config =
        read("[DumpTool Config]\nAppTitle = Bench 7\nScalarMode = 1\nFwBin = sub/a b.bin\n");
    EXPECT_EQ(config.appTitle, "Bench 7");
    EXPECT_EQ(config.isScalarMode, 1);
    EXPECT_EQ(config.fwbinPath, "sub/a b.bin");
    EXPECT_EQ(config.problem, "");
    EXPECT_EQ(console, "");
}

TEST_F(Configuration, MatchesNamesInAnyCase)
{
    const ToolConfig config = read("[dumptool CONFIG]\nAPPTITLE = x\n[SUPPORT vid PID]\n"
                                   "vid_0a = 1\nSsPid_0A = 2\nHSPID_0a = 3\n");
    EXPECT_EQ(config.appTitle, "x");
    EXPECT_EQ(SupportedIdList[10], (SupportedIdEntry{1, 1, 2, 3}));
}

TEST_F(Configuration, IsAllDefaultsWhenTheFileIsMissing)
{
    const ToolConfig config = readFile();
    expectDefaults(config);
    EXPECT_EQ(config.problem, "iniparser: cannot open " + path());
    EXPECT_EQ(console, "");
}

TEST_F(Configuration, ReadsTheScalarModeWithBaseDetection)
{
    const std::pair<const char*, std::int32_t> cases[] = {
        {"0", 0},   {"1", 1},   {"0x1", 1},    {"01", 1}, {"2", 2},  {"010", 8}, {"0xff", 255},
        {"-1", -1}, {"yes", 0}, {"1 of 2", 1}, {"", 0},   {"09", 0}, {"0x", 0},
    };
    for (const auto& [text, value] : cases) {
        EXPECT_EQ(read(std::string("[DumpTool Config]\nScalarMode = ") + text + "\n").isScalarMode,
                  value)
            << text;
    }
}

TEST_F(Configuration, NamesTheHubsMakerOnRequest)
{
    read("[DumpTool Config]\nHubMakerVid = 0x2345\n");
    EXPECT_EQ(HubMakerVid, 0x2345);
    read("[DumpTool Config]\nFwBin = a.bin\n");
    EXPECT_EQ(HubMakerVid, 0) << "the one that the program was built with";
}

TEST_F(Configuration, CountsItsKeysInHex)
{
    ids(*this,
        triple("10", "1", "2", "3") + triple("0A", "4", "5", "6") + triple("3F", "7", "8", "9"));
    EXPECT_EQ(validCount(), 3);
    EXPECT_EQ(SupportedIdList[16], (SupportedIdEntry{1, 1, 2, 3}));
    EXPECT_EQ(SupportedIdList[10], (SupportedIdEntry{1, 4, 5, 6}));
    EXPECT_EQ(SupportedIdList[63], (SupportedIdEntry{1, 7, 8, 9}));
    expectCleanRest();
}

TEST_F(Configuration, ReadsNoKeyOutsideItsTable)
{
    ids(*this, triple("40", "1", "2", "3") + triple("FF", "1", "2", "3") +
                   triple("100", "1", "2", "3") + triple("5", "1", "2", "3") +
                   triple("005", "1", "2", "3"));
    EXPECT_EQ(validCount(), 0);
    expectCleanRest();
}

TEST_F(Configuration, GoesOnBehindAnIncompleteEntry)
{
    ids(*this, "VID_00 = 1\nSSPID_00 = 2\n" + triple("01", "1", "0", "3") +
                   triple("02", "x", "2", "3") + triple("03", "1", "2", "") +
                   triple("04", "0x10000", "2", "3") + triple("05", "1", "65536", "3") +
                   triple("06", "1", "2", "0x70000") + triple("20", "1", "2", "3"));
    EXPECT_EQ(validCount(), 1);
    EXPECT_EQ(SupportedIdList[32], (SupportedIdEntry{1, 1, 2, 3}));
    expectCleanRest();
}

TEST_F(Configuration, KeepsTheLowSixteenBits)
{
    ids(*this,
        triple("00", "0x11209", "0xFFFF0001", "65538") + triple("01", "-1", "010", "0xffff"));
    EXPECT_EQ(SupportedIdList[0], (SupportedIdEntry{1, 0x1209, 0x0001, 0x0002}));
    EXPECT_EQ(SupportedIdList[1], (SupportedIdEntry{1, 0xFFFF, 8, 0xFFFF}));
}

TEST_F(Configuration, ReadsASectionThatIsNamedLikeAKeyAsMissing)
{
    expectDefaults(
        read("[DumpTool Config:AppTitle]\n[DumpTool Config:ScalarMode]\n[DumpTool Config:FwBin]\n"
             "[Support Vid Pid:VID_00]\n[Support Vid Pid:SSPID_00]\n[Support Vid Pid:HSPID_00]\n"));
}

TEST_F(Configuration, SaysInOneLineWhichLineIsWrong)
{
    const ToolConfig config = read("[DumpTool Config]\nAppTitle = x\nno key\n[no end\n");
    expectDefaults(config);
    EXPECT_EQ(config.problem, "iniparser: syntax error in " + path() + " (3)");
    EXPECT_EQ(read("[a]\nb = " + std::string(2000, 'x') + "\n").problem,
              "iniparser: input line too long in " + path() + " (2)");
    EXPECT_EQ(console, "");
    EXPECT_EQ(read("[a]\nb = c\n").problem, "");
}

TEST_F(Configuration, TakesAFileOfExactlyTheLargestSize)
{
    std::string content = "[DumpTool Config]\nAppTitle = x\n";
    content.resize(65536, '\n');
    EXPECT_EQ(read(content).appTitle, "x");
    const ToolConfig tooLarge = read(content + '\n');
    expectDefaults(tooLarge);
    EXPECT_EQ(tooLarge.problem, path() + " is larger than 64 KiB and was not read");
}

TEST_F(Configuration, RefusesAnEndlessFileThatClaimsToBeEmpty)
{
    fs::create_symlink("/proc/kallsyms", path());
    EXPECT_EQ(readFile().problem, path() + " is larger than 64 KiB and was not read");
}

TEST_F(Configuration, IsAllDefaultsWhenThePathIsNoFile)
{
    const auto expectRefused = [this] {
        const ToolConfig config = readFile();
        expectDefaults(config);
        EXPECT_EQ(config.problem, path() + " is not a regular file and was not read");
    };
    fs::create_directory(path());
    expectRefused();
    fs::remove(path());
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    expectRefused();
}

TEST_F(Configuration, IsAllDefaultsWhenTheFileMayNotBeRead)
{
    m_folder.write("config.ini", "[DumpTool Config]\nAppTitle = x\n");
    fs::permissions(path(), fs::perms::none);
    ToolConfig config;
    {
        const WithoutPrivilege nobody;
        config = readToolConfig(path());
    }
    expectDefaults(config);
    EXPECT_EQ(config.problem, "iniparser: cannot open " + path());
}

} // namespace

} // namespace vornadel::test
