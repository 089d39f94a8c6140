#include "platform/macos/GestaltVersion.h"

#include "tests/macos/MacTest.h"

#include <string>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;

constexpr OSType kPacked = gestaltSystemVersion;

class GestaltVersionTest : public MacTest
{
protected:
    /// "10.3.9", or the error.
    std::string version()
    {
        GestaltVersion system;
        const SystemVersionNumbers read = system.read();
        if (read.error != 0) {
            return "error " + std::to_string(read.error);
        }
        return std::to_string(read.major) + '.' + std::to_string(read.minor) + '.' +
               std::to_string(read.bugfix);
    }

    void answerNumbers(SInt32 major, SInt32 minor, SInt32 bugfix)
    {
        mac.gestalt[gestaltSystemVersionMajor] = major;
        mac.gestalt[gestaltSystemVersionMinor] = minor;
        mac.gestalt[gestaltSystemVersionBugFix] = bugfix;
    }
};

TEST_F(GestaltVersionTest, IsUnpackedUpToTenThree)
{
    answerNumbers(99, 99, 99);
    mac.gestalt[kPacked] = 0x1039;
    EXPECT_EQ(version(), "10.3.9");
    EXPECT_THAT(mac.calls(), ElementsAre("Gestalt(sysv)"));
    mac.gestalt[kPacked] = 0x103F;
    EXPECT_EQ(version(), "10.3.15");
    mac.gestalt[kPacked] = 0x0922;
    EXPECT_EQ(version(), "9.2.2");
    mac.gestalt[kPacked] = 0x1000;
    EXPECT_EQ(version(), "10.0.0");
}

TEST_F(GestaltVersionTest, IsUnpackedDigitByDigitWhateverItIs)
{
    mac.gestalt[kPacked] = 0x0FAC;
    EXPECT_EQ(version(), "15.10.12");
    mac.gestalt[kPacked] = -1; // at most 10.3, as a number with a sign
    EXPECT_EQ(version(), "165.15.15");
}

TEST_F(GestaltVersionTest, IsAskedForInThreeNumbersAfterwards)
{
    mac.gestalt[kPacked] = 0x1040;
    answerNumbers(10, 10, 5);
    EXPECT_EQ(version(), "10.10.5");
    EXPECT_THAT(mac.calls(),
                ElementsAre("Gestalt(sysv)", "Gestalt(sys1)", "Gestalt(sys2)", "Gestalt(sys3)"));
    mac.gestalt[kPacked] = 0x1095; // no more than one digit fits for the minor version
    answerNumbers(14, 6, 1);
    EXPECT_EQ(version(), "14.6.1");
}

TEST_F(GestaltVersionTest, FailsWithTheErrorOfTheFirstSelectorThatIsRefused)
{
    mac.gestalt[kPacked] = 0x1095;
    answerNumbers(10, 10, 5);
    mac.gestaltErrors[gestaltSystemVersionMinor] = -5552;
    mac.gestaltErrors[gestaltSystemVersionBugFix] = -5553;
    EXPECT_EQ(version(), "error -5552");
    EXPECT_THAT(mac.calls(), ElementsAre("Gestalt(sysv)", "Gestalt(sys1)", "Gestalt(sys2)"));
}

TEST_F(GestaltVersionTest, FailsWithoutThePackedVersion)
{
    answerNumbers(10, 10, 5);
    EXPECT_EQ(version(), "error -5551");
    EXPECT_THAT(mac.calls(), ElementsAre("Gestalt(sysv)"));
}

TEST_F(GestaltVersionTest, FailsWithoutAnyOfTheThreeNumbers)
{
    mac.gestalt[kPacked] = 0x1095;
    for (const OSType missing :
         {gestaltSystemVersionMajor, gestaltSystemVersionMinor, gestaltSystemVersionBugFix}) {
        answerNumbers(10, 10, 5);
        mac.gestalt.erase(missing);
        EXPECT_EQ(version(), "error -5551");
    }
}

} // namespace
} // namespace vornadel::test
