#include "hub/HubTransport.h"
#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"
#include "tests/support/FullDisk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

std::string textIn(const TemporaryFolder& folder, const std::string& name)
{
    const std::vector<std::uint8_t> bytes = folder.read(name);
    return {bytes.begin(), bytes.end()};
}

std::size_t filesIn(const TemporaryFolder& folder)
{
    const fs::directory_iterator begin(folder.path());
    return static_cast<std::size_t>(std::distance(begin, fs::directory_iterator()));
}

TEST(Read, SavesTheWholeFlashAndTellsEachStepAndPercentageOnALineOfItsOwn)
{
    Session session("latency=none");
    const std::string file = session.folder.path("read.bin");
    EXPECT_EQ(session.read(file), kExitSuccess);
    EXPECT_EQ(session.out.str(), "0%\n"
                                 "Open Device...\n10%\n"
                                 "Reading Flash...\n20%\n30%\n40%\n50%\n60%\n70%\n80%\n90%\n"
                                 "Reset to Flash Code...\n100%\n"
                                 "Read Fw Success\n"
                                 "Saved 32768 bytes to " +
                                     file + '\n');
    EXPECT_THAT(session.err.str(), IsEmpty());
    EXPECT_EQ(session.folder.read("read.bin"), demoImage());
    EXPECT_EQ(session.hub().flash(), demoImage());
    EXPECT_EQ(session.hub().runningCode(), HubCode::Flash);
    EXPECT_FALSE(Hub_IsOpen());
}

TEST(Read, KeepsEveryByteOfTheNameInAnyLocale)
{
    for (const std::string name : {"\xC3\xBC.bin", "Caf\xE9.bin", "\xFF\x80 \n.bin"}) {
        Session session("latency=none");
        EXPECT_EQ(session.read(session.folder.path(name)), kExitSuccess);
        EXPECT_EQ(session.folder.read(name), demoImage());
        EXPECT_EQ(filesIn(session.folder), 2U) << "config.ini and the flash";
    }
}

struct Failure {
    const char* options;
    const char* reason;
};

constexpr const char* kNotOpened =
    "Fail to Open Rom Device\nPlease Load Driver firstly\nThen replugin usb hub device\n";

class FailingRead : public testing::TestWithParam<Failure>
{
};

TEST_P(FailingRead, TellsTheReasonOnStandardErrorAndLeavesTheFile)
{
    Session session(GetParam().options);
    const std::string file = session.folder.write("read.bin", std::string("earlier"));
    const std::size_t files = filesIn(session.folder);
    EXPECT_EQ(session.read(file), kExitFailure);
    EXPECT_EQ(session.err.str(), std::string(GetParam().reason) + "Read Fw Fail\n");
    EXPECT_THAT(session.out.str(), StartsWith("0%\nOpen Device...\n"));
    EXPECT_THAT(session.out.str(), Not(HasSubstr("\n0%\n")));
    EXPECT_THAT(session.out.str(), Not(HasSubstr("Success")));
    EXPECT_EQ(textIn(session.folder, "read.bin"), "earlier");
    EXPECT_EQ(filesIn(session.folder), files);
    EXPECT_GT(session.hub().faultsTriggered(), 0U);
    EXPECT_FALSE(Hub_IsOpen());
}

INSTANTIATE_TEST_SUITE_P(
    Faults, FailingRead,
    testing::Values(Failure{"latency=none,mode=rom,fault=open-refused:1", kNotOpened},
                    Failure{"latency=none,mode=rom,fault=stall@read#1", "Fail to Read Flash\n"},
                    Failure{"latency=none,mode=rom,fault=stall@flash",
                            "Fail to Reset to Flash Code\n"}));

TEST(Read, LeavesTheHubAloneWhereNothingCanBeSaved)
{
    Session session("latency=none");
    session.folder.write("file", std::string("earlier"));
    fs::create_symlink("/dev/full", session.folder.path("full"));
    const struct {
        std::string file;
        std::string why;
    } rows[] = {
        {session.folder.path(), "it is a folder"},
        {session.folder.path("missing/read.bin"), "No such file or directory"},
        {session.folder.path("file/read.bin"), "Not a directory"},
        {"/dev/full", "it is not a regular file"},
        {session.folder.path("full"), "it is not a regular file"},
        {"/proc/self/read.bin", "No such file or directory"}, // nobody can create files there
    };
    const std::size_t files = filesIn(session.folder);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.file);
        EXPECT_EQ(session.read(row.file), kExitFailure);
        EXPECT_EQ(session.err.str(), "the flash was not read, because it could not be saved: " +
                                         row.file + ": " + row.why + '\n');
        EXPECT_THAT(session.out.str(), IsEmpty());
    }
    EXPECT_EQ(session.hub().requestCount(), 0U);
    EXPECT_EQ(textIn(session.folder, "file"), "earlier");
    EXPECT_EQ(filesIn(session.folder), files);
}

TEST(Read, LeavesTheFileWhenTheDiskIsFull)
{
    Session session("latency=none");
    const std::string file = session.folder.write("read.bin", std::string("earlier"));
    const std::size_t files = filesIn(session.folder);

    int status = kExitSuccess;
    {
        const FullDisk oneByteShort(32767);
        status = session.read(file);
    }

    EXPECT_EQ(status, kExitFailure);
    EXPECT_EQ(session.err.str(),
              "the flash was read but could not be saved: " + file + ": File too large\n");
    EXPECT_EQ(textIn(session.folder, "read.bin"), "earlier");
    EXPECT_EQ(filesIn(session.folder), files);
}

} // namespace

} // namespace vornadel::test
