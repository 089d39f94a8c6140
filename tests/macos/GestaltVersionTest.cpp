#include "platform/macos/GestaltVersion.h"

#include "tests/macos/MacTest.h"

#include <string>
#include <utility>

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
    const std::pair<SInt32, std::string> rows[] = {
        {0x1039, "10.3.9"}, {0x103F, "10.3.15"},  {0x0922, "9.2.2"},
        {0x1000, "10.0.0"}, {0x0FAC, "15.10.12"}, // digit by digit, whatever it is
        {-1, "165.15.15"},                        // at most 10.3, as a number with a sign
    };
    for (const auto& [packed, unpacked] : rows) {
        mac.gestalt[kPacked] = packed;
        mac.forgetCalls();
        EXPECT_EQ(version(), unpacked);
        EXPECT_THAT(mac.calls(), ElementsAre("Gestalt(sysv)"));
    }
}

TEST_F(GestaltVersionTest, IsAskedForInThreeNumbersAfterwards)
{
    mac.gestalt[kPacked] = 0x1040;
    answerNumbers(10, 10, 5);
    EXPECT_EQ(version(), "10.10.5");
    EXPECT_THAT(mac.calls(),
                ElementsAre("Gestalt(sysv)", "Gestalt(sys1)", "Gestalt(sys2)", "Gestalt(sys3)"));
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

} // namespace
} // namespace vornadel::test
