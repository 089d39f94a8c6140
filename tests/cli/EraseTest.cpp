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

struct Failure {
    const char* options;
    const char* reason;
    bool erased;
};

class FailingErase : public testing::TestWithParam<Failure>
{
};

TEST_P(FailingErase, TellsTheReasonOnStandardErrorAndExitsWithOne)
{
    Session session(GetParam().options);
    EXPECT_EQ(session.erase(), kExitFailure);
    EXPECT_EQ(session.err.str(), std::string(GetParam().reason) + "\nErase FW Fail\n");
    EXPECT_THAT(session.out.str(), Not(HasSubstr("Success")));
    EXPECT_EQ(session.hub().flash(), GetParam().erased ? kBlank : demoImage());
    EXPECT_GT(session.hub().faultsTriggered(), 0U);
    EXPECT_FALSE(Hub_IsOpen());
}

INSTANTIATE_TEST_SUITE_P(
    Faults, FailingErase,
    testing::Values(
        Failure{"latency=none,mode=rom,fault=open-refused:1", "Fail to Open Rom Device", false},
        Failure{"latency=none,fault=stall@erase#1,fault=stall@erase#2,fault=stall@erase#3",
                "Fail to Erase flash", false},
        Failure{"latency=none,mode=rom,fault=vanish-after@erase", "Fail to Erase flash", true},
        Failure{"latency=none,mode=rom,fault=never@1", "Fail to Reset Flash & Wait", true}));

} // namespace

} // namespace vornadel::test
