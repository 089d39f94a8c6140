#include "config/ToolConfig.h"

#include "hub/SupportedIds.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace vornadel::test
{

namespace
{

namespace fs = std::filesystem;

class Configuration : public testing::Test
{
public:
    ~Configuration() override { fs::remove_all(m_directory); }

protected:
    Configuration()
    {
        std::string pattern = (fs::temp_directory_path() / "config_tests-XXXXXX").string();
        m_directory = mkdtemp(pattern.data());
        SupportedIdList.fill({1, 9, 9, 9}); // entries that are not cleared show
    }

    std::string path() const { return (m_directory / "config.ini").string(); }

    ToolConfig read(const std::string& content)
    {
        std::ofstream(path(), std::ios::binary) << content;
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
    fs::path m_directory;
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

TEST_F(Configuration, KeepsUtf8AndQuotedTexts)
{
    const ToolConfig config = read("[DumpTool Config]\nAppTitle = Pr\xC3\xBC"
                                   "fstand\nFwBin = \"a;b#c.bin\"\n");
    EXPECT_EQ(config.appTitle, "Pr\xC3\xBC"
                               "fstand");
    EXPECT_EQ(config.fwbinPath, "a;b#c.bin");
}

TEST_F(Configuration, IsAllDefaultsWhenTheFileIsMissing)
{
    const ToolConfig config = readFile();
    expectDefaults(config);
    EXPECT_EQ(config.problem, "iniparser: cannot open " + path());
    EXPECT_EQ(console, "");
}

TEST_F(Configuration, IsAllDefaultsWhenTheFileIsEmpty) { expectDefaults(read("")); }

struct NumberCase {
    const char* text;
    std::int32_t value;
};

class ScalarMode : public Configuration, public testing::WithParamInterface<NumberCase>
{
};

TEST_P(ScalarMode, IsReadWithBaseDetection)
{
    EXPECT_EQ(
        read(std::string("[DumpTool Config]\nScalarMode = ") + GetParam().text + "\n").isScalarMode,
        GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Numbers, ScalarMode,
                         testing::Values(NumberCase{"0", 0}, NumberCase{"1", 1},
                                         NumberCase{"0x1", 1}, NumberCase{"01", 1},
                                         NumberCase{"2", 2}, NumberCase{"010", 8},
                                         NumberCase{"0xff", 255}, NumberCase{"-1", -1},
                                         NumberCase{"yes", 0}, NumberCase{"1 of 2", 1},
                                         NumberCase{"", 0}, NumberCase{"09", 0},
                                         NumberCase{"0x", 0}));

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

TEST_F(Configuration, TakesAFullTable)
{
    std::string lines;
    for (unsigned i = 0; i < kSupportedIdCount; ++i) {
        char index[8];
        std::snprintf(index, sizeof index, "%02X", i);
        lines +=
            triple(index, std::to_string(i + 1), std::to_string(i + 100), std::to_string(i + 200));
    }
    ids(*this, lines);
    EXPECT_EQ(validCount(), 64);
    for (std::uint16_t i = 0; i < kSupportedIdCount; ++i) {
        const auto expected = SupportedIdEntry{1, static_cast<std::uint16_t>(i + 1),
                                               static_cast<std::uint16_t>(i + 100),
                                               static_cast<std::uint16_t>(i + 200)};
        EXPECT_EQ(SupportedIdList.at(i), expected);
    }
}

TEST_F(Configuration, GoesOnBehindAnIncompleteEntry)
{
    ids(*this, "VID_00 = 1\nSSPID_00 = 2\n" + triple("01", "1", "0", "3") +
                   triple("02", "x", "2", "3") + triple("03", "1", "2", "") +
                   triple("20", "1", "2", "3"));
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

TEST_F(Configuration, DropsAnEntryWhoseLowBitsAreZero)
{
    ids(*this, triple("00", "0x10000", "2", "3") + triple("01", "1", "65536", "3") +
                   triple("02", "1", "2", "0x70000"));
    EXPECT_EQ(validCount(), 0);
    expectCleanRest();
}

TEST_F(Configuration, SurvivesNumbersThatNobodyCanHold)
{
    ids(*this,
        triple("00", "99999999999999999999", "-99999999999999999999", "0xFFFFFFFFFFFFFFFFFFFF"));
    for (const SupportedIdEntry& entry : SupportedIdList) {
        EXPECT_LE(entry.valid, 1);
    }
    EXPECT_EQ(read("[DumpTool Config]\nScalarMode = 99999999999999999999\n").appTitle, "Vornadel");
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

TEST_F(Configuration, SurvivesAFileThatIsNoText)
{
    std::string bytes;
    std::uint32_t state = 1;
    for (int i = 0; i < 100000; ++i) {
        state = state * 1664525 + 1013904223;
        bytes += static_cast<char>(state >> 24);
    }
    expectDefaults(read(bytes));
    expectDefaults(read(std::string(5000, '\0')));
    expectDefaults(read(std::string("\xFF\xFE[") + '\0' + "D" + '\0' + "]"));
}

TEST_F(Configuration, SaysThatAFolderWasNotRead)
{
    fs::create_directory(path());
    const ToolConfig config = readFile();
    expectDefaults(config);
    EXPECT_EQ(config.problem, path() + " is not a regular file and was not read");
}

TEST_F(Configuration, DoesNotWaitForAPipe)
{
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    const ToolConfig config = readFile();
    expectDefaults(config);
    EXPECT_EQ(config.problem, path() + " is not a regular file and was not read");
}

TEST_F(Configuration, IsAllDefaultsWhenTheFileMayNotBeRead)
{
    std::ofstream(path()) << "[DumpTool Config]\nAppTitle = x\n";
    fs::permissions(path(), fs::perms::none);
    if (geteuid() == 0) {
        // Root can read everything; a dangling link comes closest.
        fs::remove(path());
        fs::create_symlink(path() + ".missing", path());
    }
    const ToolConfig config = readFile();
    expectDefaults(config);
    EXPECT_EQ(config.problem, "iniparser: cannot open " + path());
}

TEST_F(Configuration, ForgetsTheIdsOfTheFileBefore)
{
    ids(*this, triple("00", "1", "2", "3"));
    EXPECT_EQ(validCount(), 1);
    fs::remove(path());
    expectDefaults(readFile());
}

} // namespace

} // namespace vornadel::test
