#include "hub/HubTransport.h"
#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const std::vector<std::uint8_t> kBlank(32768, 0xFF);

TEST(Erase, LeavesABlankFlashAndTellsItsSteps)
{
    Session session("latency=none");
    EXPECT_EQ(session.erase(), kExitSuccess);
    EXPECT_EQ(session.out.str(), "0%\n"
                                 "Open Rom Device...\n"
                                 "Erase Flash...\n"
                                 "Reseting...\n"
                                 "Erase FW Success\n");
    EXPECT_THAT(session.err.str(), IsEmpty());
    EXPECT_EQ(session.hub().flash(), kBlank);
    EXPECT_EQ(session.hub().runningCode(), HubCode::Rom) << "there is no other left";
    EXPECT_FALSE(Hub_IsOpen());
}

TEST(Erase, TellsTheReasonOfAFailureOnStandardErrorAndExitsWithOne)
{
    Session session("latency=none,fault=stall@erase#1,fault=stall@erase#2,fault=stall@erase#3");
    EXPECT_EQ(session.erase(), kExitFailure);
    EXPECT_EQ(session.err.str(), "Fail to Erase flash\nErase FW Fail\n");
    EXPECT_THAT(session.out.str(), Not(HasSubstr("Success")));
    EXPECT_EQ(session.hub().flash(), demoImage());
    EXPECT_FALSE(Hub_IsOpen());
}

} // namespace

} // namespace vornadel::test
