#include "props/PropertyFile.h"
#include "tests/props/DefinitionFolder.h"
#include "tests/support/FullPropertyFile.h"
#include "tests/support/WithoutPrivilege.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstddef>
#include <filesystem>
#include <string>

namespace vornadel::test
{
namespace
{

namespace fs = std::filesystem;

using ::testing::IsEmpty;

constexpr const char* kMissing = " cannot be found and was not read";
constexpr const char* kGood = "[HubFF_USB_05]\nPropName = Five\n";

class HostileFile : public DefinitionFolder
{
protected:
    /// Checks that nothing was read, and that one line says which file and why.
    void expectRefused(const std::string& why)
    {
        EXPECT_THAT(readFile(), IsEmpty());
        EXPECT_EQ(problem, path() + why);
    }

    void expectRefused(const std::string& text, const std::string& why)
    {
        write(text);
        expectRefused(why);
    }

    std::string byTheReader(const std::string& fault, int line) const
    {
        return " was not read: iniparser: " + fault + " in " + path() + " (" +
               std::to_string(line) + ")";
    }

    static std::string likeAKey(const std::string& section)
    {
        return " was not read: its section [" + section + "] has the name of a key";
    }

    void expectAccepted(const std::string& text, std::size_t count)
    {
        EXPECT_EQ(read(text).size(), count);
        EXPECT_EQ(problem, "");
    }
};

TEST_F(HostileFile, ThatIsMissingIsNamed) { expectRefused(kMissing); }

TEST_F(HostileFile, ThatIsAPipeDoesNotHoldTheTool)
{
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    expectRefused(" is not a regular file and was not read");
}

TEST_F(HostileFile, ThatMayNotBeReadIsRefused)
{
    write(kGood);
    fs::permissions(path(), fs::perms::none);
    ::testing::internal::CaptureStderr(); // with the privilege that its file may need
    PropItemList items;
    {
        const WithoutPrivilege nobody;
        items = readPropertyFile(path(), problem);
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(items, IsEmpty());
    EXPECT_EQ(problem, path() + " cannot be opened and was not read");
}

TEST_F(HostileFile, ThatIsBinaryIsRefused)
{
    expectRefused(std::string(kGood) + std::string(1, '\0') + "\n",
                  " has a NUL character in line 3 and was not read");
    expectAccepted(std::string(kGood) + std::string(4096, '\0'), 1);
    expectRefused("\x7F"
                  "ELF\x02\x01\x01\n\xFF\xFE\xFD\n",
                  byTheReader("syntax error", 1));
}

TEST_F(HostileFile, LargerThanAMebibyteIsRefused)
{
    constexpr std::size_t kMebibyte = 1'048'576;
    std::string text = kGood;
    const std::string comment = ";" + std::string(98, 'x') + "\n";
    while (text.size() + comment.size() <= kMebibyte) {
        text += comment;
    }
    text.append(kMebibyte - text.size(), '\n');
    expectAccepted(text, 1);
    expectRefused(text + "\n", " is larger than 1 MiB and was not read");
}

TEST_F(HostileFile, WithASyntaxErrorIsRefusedWithItsFirstLine)
{
    expectRefused(std::string(kGood) + "neither\nnor\n", byTheReader("syntax error", 3));
}

TEST_F(HostileFile, WithASectionNamedLikeAKeyIsRefused)
{
    expectRefused("[HubFF_USB_05:PropName]\n", likeAKey("hubff_usb_05:propname"));
    expectRefused(std::string(kGood) + "[HubFF_USB_05:PropMask]\n",
                  likeAKey("hubff_usb_05:propmask"));
    expectRefused(std::string(kGood) + "PropOption_00 = Off\n[HubFF_USB_05:DataOption_00]\n",
                  likeAKey("hubff_usb_05:dataoption_00"));
    expectAccepted(std::string(kGood) + "[HubFF_USB_05:Other]\nx = 1\n[HubFF_USB_FF:PropName]\n",
                   1);
}

TEST_F(HostileFile, ThatIsFullIsRead)
{
    const PropItemList items = read(fullPropertyFile("SSC"));
    EXPECT_EQ(problem, "");
    ASSERT_EQ(items.size(), 255U);
    EXPECT_EQ(items.back()->propName, "Property 254");
    EXPECT_EQ(items.back()->propList.size(), 16U);
}

TEST_F(HostileFile, WithMoreLinesThanAnyDefinitionNeedsIsRefused)
{
    expectAccepted(distinctKeys(kMostPropertyLines), 0);
    expectAccepted(distinctKeys(kMostPropertyLines) + "\n  \n; comment\n \t# comment\n" +
                       std::string(2, '\0'),
                   0);
    expectRefused(distinctKeys(kMostPropertyLines) + "one more=\n",
                  " has more than 16000 lines that are not comments and was not read");
}

} // namespace
} // namespace vornadel::test
