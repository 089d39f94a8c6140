#include "standins/sim/DemoImage.h"
#include "standins/sim/FlashFile.h"
#include "tests/sim/HubBench.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WithoutPrivilege.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>

#include <sys/stat.h>

namespace vornadel::test
{
namespace
{

namespace fs = std::filesystem;
using testing::HasSubstr;

class FlashFileTest : public testing::Test
{
protected:
    std::string path(const std::string& name = "hub.bin") const { return m_folder.path(name); }

    SimulatedHubOptions options(const std::string& name = "hub.bin") const
    {
        SimulatedHubOptions onFile = romOptions();
        onFile.keepInMemory = false;
        onFile.image = path(name);
        return onFile;
    }

    Bytes content(const std::string& name = "hub.bin") const { return m_folder.read(name); }

    void put(const Bytes& bytes, const std::string& name = "hub.bin") const
    {
        m_folder.write(name, bytes);
    }

    std::string refusal(const SimulatedHubOptions& bad)
    {
        std::string error;
        EXPECT_EQ(SimulatedBus::create(bad, m_clock, error), nullptr);
        return error;
    }

    std::string refusalWithoutPrivilege()
    {
        const WithoutPrivilege nobody;
        return refusal(options());
    }

    const TemporaryFolder m_folder;
    VirtualClock m_clock;
};

TEST_F(FlashFileTest, IsMadeFromTheDemoImage)
{
    const HubBench bench(options("new/folder/hub.bin"));
    EXPECT_EQ(content("new/folder/hub.bin"), demoImage());
}

TEST_F(FlashFileTest, KeepsEveryChangeBetweenRuns)
{
    {
        HubBench bench(options());
        ASSERT_TRUE(bench.open());
        bench.erase();
        EXPECT_EQ(content(), Bytes(kFlashSize, 0xFF));
        bench.write(0x1234, {0x42});
        EXPECT_EQ(content()[0x1234], 0x42);
    }
    const HubBench next(options());
    EXPECT_EQ(next.hub().flash()[0x1234], 0x42);
    EXPECT_EQ(next.hub().flash()[0x1235], 0xFF);
}

TEST_F(FlashFileTest, IsReplacedInOneStep)
{
    put(demoImage());
    std::ifstream before(path(), std::ios::binary); // keeps reading the file that it opened
    HubBench bench(options());
    ASSERT_TRUE(bench.open());
    bench.erase();
    const Bytes old{std::istreambuf_iterator<char>(before), std::istreambuf_iterator<char>()};
    EXPECT_EQ(old, demoImage());
}

TEST_F(FlashFileTest, OfAnotherSizeIsRefusedAndLeftAlone)
{
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{100}, kFlashSize - 1, kFlashSize + 1}) {
        put(Bytes(size, 0x42));
        EXPECT_THAT(refusal(options()), HasSubstr(std::to_string(size) + " bytes long"));
        EXPECT_EQ(content(), Bytes(size, 0x42));
    }
}

TEST_F(FlashFileTest, ThatIsNoFileIsRefused)
{
    EXPECT_THAT(refusal(options("")), HasSubstr("a folder"));
    fs::create_directory(path("folder"));
    EXPECT_THAT(refusal(options("folder")), HasSubstr("a folder"));
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    EXPECT_THAT(refusal(options("pipe")), HasSubstr("not a regular file"));
}

TEST_F(FlashFileTest, ThatCannotBeMadeIsRefused)
{
    put(Bytes(1, 0), "file");
    EXPECT_THAT(refusal(options("file/hub.bin")), HasSubstr("folder"));
    EXPECT_FALSE(refusal(options(std::string(300, 'x'))).empty());
    SimulatedHubOptions inProc = options();
    inProc.image = "/proc/vornadel.bin";
    EXPECT_THAT(refusal(inProc), HasSubstr("/proc/vornadel.bin"));
}

TEST_F(FlashFileTest, ThatCannotBeReplacedFailsTheRequest)
{
    HubBench bench(options("folder/hub.bin"));
    ASSERT_TRUE(bench.open());
    fs::remove_all(path("folder"));
    EXPECT_EQ(bench.erase(), kSimulatedStall);
    EXPECT_EQ(bench.hub().flash(), demoImage());
    EXPECT_FALSE(bench.hub().setFlash(demoImage(0x0101)));
}

TEST_F(FlashFileTest, ThatMayNotBeReadWrittenOrReplacedIsRefused)
{
    put(demoImage());
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0777), 0);
    ASSERT_EQ(::chmod(path().c_str(), 0200), 0);
    EXPECT_THAT(refusalWithoutPrivilege(), HasSubstr("cannot read " + path()));
    ASSERT_EQ(::chmod(path().c_str(), 0444), 0);
    EXPECT_THAT(refusalWithoutPrivilege(), HasSubstr("cannot write " + path()));
    put({}, "hub.bin.lock");
    ASSERT_EQ(::chmod(path().c_str(), 0666), 0);
    ASSERT_EQ(::chmod(path("hub.bin.lock").c_str(), 0666), 0);
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0555), 0);
    EXPECT_THAT(refusalWithoutPrivilege(), HasSubstr("cannot replace files in " + m_folder.path()));
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0700), 0);
    EXPECT_EQ(content(), demoImage());
}

TEST_F(FlashFileTest, WhoseLockCannotBeOpenedIsRefused)
{
    put(demoImage());
    fs::create_directory(path("hub.bin.lock"));
    EXPECT_THAT(refusal(options()), HasSubstr("cannot open " + path("hub.bin.lock")));
    fs::remove(path("hub.bin.lock"));
    fs::create_symlink(path("planted"), path("hub.bin.lock"));
    EXPECT_THAT(refusal(options()), HasSubstr("cannot open " + path("hub.bin.lock")));
    fs::remove(path("hub.bin.lock"));
    HubBench bench(options());
    fs::remove(path("hub.bin.lock"));
    fs::create_symlink(path("planted"), path("hub.bin.lock"));
    EXPECT_FALSE(bench.open());
    EXPECT_FALSE(fs::exists(path("planted")));
}

TEST_F(FlashFileTest, ThatWasSpoiledFailsTheOpen)
{
    HubBench bench(options());
    put(Bytes(5, 0));
    EXPECT_FALSE(bench.open());
    put(demoImage(0x0333));
    ASSERT_TRUE(bench.open());
    EXPECT_EQ(bench.version(), 0x0333);
}

TEST_F(FlashFileTest, IsHeldByOneProgramAtATime)
{
    HubBench first(options());
    HubBench second(options());
    ASSERT_TRUE(first.open());
    EXPECT_FALSE(second.open());
    first.erase();
    first.device->close();
    ASSERT_TRUE(second.open());
    EXPECT_EQ(second.version(), 0x0001); // read again
    EXPECT_FALSE(first.open());
}

TEST_F(FlashFileTest, IsLetGoWhenTheHubLeaves)
{
    HubBench first(options());
    HubBench second(options());
    ASSERT_TRUE(first.open());
    first.hub().unplug();
    EXPECT_TRUE(second.open());
}

TEST_F(FlashFileTest, SharesItsLockUnderAllItsNames)
{
    fs::create_symlink(path(), path("link.bin")); // dangling: the file is made where it leads
    HubBench second(options("link.bin"));
    EXPECT_TRUE(fs::is_symlink(path("link.bin")));
    HubBench first(options());
    ASSERT_TRUE(first.open());
    EXPECT_FALSE(second.open());
}

} // namespace
} // namespace vornadel::test
