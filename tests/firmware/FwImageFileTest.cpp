#include "tests/firmware/ImageBytes.h"
#include "tests/support/Resources.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WithoutPrivilege.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace vornadel::test
{
namespace
{

constexpr std::uint32_t kNoSize = 0xFFFFFFFF;

// A temporary folder, and an image that a failed load must not change.
class FwImageFile : public ::testing::Test
{
protected:
    FwImageFile()
    {
        EXPECT_TRUE(parse(m_image, m_earlier));
        LastError = 0;
    }

    std::string path(const std::string& name) const { return m_folder.path(name); }
    std::string fileOf(const ByteList& bytes) const { return m_folder.write("image.bin", bytes); }

    /// A sparse file of that length.
    std::string sparseFile(std::uintmax_t length) const
    {
        std::string file = m_folder.write("sparse.bin", "");
        std::filesystem::resize_file(file, length);
        return file;
    }

    void expectRefused(const std::string& file)
    {
        LastError = 0;
        EXPECT_FALSE(FwImage_LoadFile(m_image, file)) << file;
        EXPECT_EQ(LastError, 6) << file;
        EXPECT_TRUE(m_image.loaded);
        EXPECT_EQ(m_image.size, 512);
        EXPECT_EQ(bytesAt(m_image.data.get(), 512), m_earlier);
        EXPECT_EQ(m_image.descriptor, m_image.data.get() + 256);
        EXPECT_EQ(textOf(m_image.manufacturer), "Maker");
    }

    const ByteList m_earlier = imageWithBlock(512, 256);
    const TemporaryFolder m_folder;
    FwImage m_image;
};

TEST_F(FwImageFile, LoadsAWholeFile)
{
    const ByteList bytes = imageWithBlock(32768, 32512);
    const std::string file = fileOf(bytes);
    const std::size_t filesOpen = Resources::now().descriptors;
    EXPECT_EQ(GetFileSize(file), 32768U);
    ASSERT_TRUE(FwImage_LoadFile(m_image, file));
    EXPECT_EQ(Resources::now().descriptors, filesOpen);
    EXPECT_EQ(LastError, 0);
    EXPECT_EQ(m_image.size, 32768);
    EXPECT_EQ(bytesAt(m_image.data.get(), 32768), bytes);
    EXPECT_EQ(m_image.descriptor, m_image.data.get() + 32512);
}

TEST_F(FwImageFile, ReplacesTheImageByAFileWithoutABlock)
{
    EXPECT_FALSE(FwImage_LoadFile(m_image, fileOf(ByteList(4096, 0))));
    EXPECT_EQ(LastError, 0);
    expectEmpty(m_image);
    EXPECT_FALSE(FwImage_LoadFile(m_image, fileOf({0x55})));
    EXPECT_EQ(LastError, 7);
    EXPECT_EQ(m_image.size, 1);
}

TEST_F(FwImageFile, KeepsTheImageWhenTheFileIsEmpty)
{
    const std::string file = fileOf({});
    EXPECT_EQ(GetFileSize(file), 0U);
    expectRefused(file);
}

TEST_F(FwImageFile, KeepsTheImageWhenThereIsNoFile)
{
    for (const std::string& missing :
         {path("missing.bin"), path("missing/image.bin"), std::string()}) {
        EXPECT_EQ(GetFileSize(missing), kNoSize);
        expectRefused(missing);
    }
    expectRefused(fileOf(m_earlier) + "/below a file");
}

TEST_F(FwImageFile, KeepsTheImageWhenItIsNoRegularFile)
{
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    for (const std::string& odd :
         {path("pipe"), m_folder.path(), std::string("/dev/zero"), std::string("/dev/null")}) {
        EXPECT_EQ(GetFileSize(odd), kNoSize) << odd;
        expectRefused(odd);
    }
}

TEST_F(FwImageFile, FollowsALink)
{
    std::filesystem::create_symlink(fileOf(imageWithBlock(256, 0)), path("link"));
    EXPECT_EQ(GetFileSize(path("link")), 256U);
    EXPECT_TRUE(FwImage_LoadFile(m_image, path("link")));
}

// A system file that delivers less than the 4096 bytes it claims, like a file that shrinks while it
// is read.
TEST_F(FwImageFile, KeepsTheImageWhenTheFileEndsEarly)
{
    const std::string shortFile = "/sys/devices/system/cpu/online";
    ASSERT_GE(GetFileSize(shortFile), 256U);
    ASSERT_NE(GetFileSize(shortFile), kNoSize);
    expectRefused(shortFile);
}

TEST_F(FwImageFile, KeepsTheImageWhenTheFileIsLongerThanAnImageCanBe)
{
    const std::string justTooLong = sparseFile(0x80000000);
    EXPECT_EQ(GetFileSize(justTooLong), 0x80000000);
    expectRefused(justTooLong);
    const std::string endless = sparseFile(std::uintmax_t{5} << 30);
    EXPECT_EQ(GetFileSize(endless), kNoSize);
    expectRefused(endless);
}

TEST_F(FwImageFile, KeepsTheImageWhenTheFileMayNotBeRead)
{
    const std::string file = fileOf(imageWithBlock(256, 0));
    std::filesystem::permissions(file, std::filesystem::perms::none);
    const WithoutPrivilege nobody;
    EXPECT_EQ(GetFileSize(file), kNoSize);
    expectRefused(file);
}

// The sanitizers need the address space themselves.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(FwImageFile, KeepsTheImageWhenTheFileDoesNotFitInMemory)
{
    const std::string file = sparseFile(0x40000000);
    EXPECT_EXIT(
        {
            rlimit limit{};
            limit.rlim_cur = limit.rlim_max = 0x20000000;
            if (setrlimit(RLIMIT_AS, &limit) != 0) {
                _exit(1);
            }
            expectRefused(file);
            EXPECT_FALSE(FwImage_Parse(m_image, m_image.data.get(), 0x7FFFFFFF));
            EXPECT_EQ(LastError, 6);
            expectEmpty(m_image);
            EXPECT_EQ(m_image.size, 0);
            _exit(HasFailure() ? 1 : 0);
        },
        ::testing::ExitedWithCode(0), "");
}
#endif

} // namespace
} // namespace vornadel::test
