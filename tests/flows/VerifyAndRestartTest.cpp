#include "hub/HubTransport.h"
#include "hub/RequestText.h"
#include "tests/flows/StrictFlow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace vornadel::test
{

namespace
{

using VerifiedFlash = StrictFlow;
using RestartedHub = StrictFlow;

} // namespace

TEST_F(VerifiedFlash, EqualsTheImageAndTheHubIsBack)
{
    EXPECT_TRUE(verify(demoImage()));
    EXPECT_EQ(steps, (std::vector{Step::Open, Step::Read, Step::Verify, Step::Restart}));
    EXPECT_EQ(flash, demoImage());
    EXPECT_EQ(result.flash, FlashState::Verified);
    EXPECT_EQ(result.hub, HubState::Flash);
    EXPECT_FALSE(result.changed);
    EXPECT_TRUE(verify({flash.begin(), flash.begin() + 100})) << "only what the image has";
}

TEST_F(VerifiedFlash, DiffersAndTheHubIsSentBack)
{
    std::vector<std::uint8_t> other = demoImage();
    other[5] ^= 1;
    other[9] ^= 1;
    EXPECT_FALSE(verify(other));
    failedWith({.step = Step::Verify, .cause = Cause::Different, .address = 5, .wrongBytes = 2});
    EXPECT_EQ(flash, demoImage());
    EXPECT_EQ(result.flash, FlashState::Untouched);
    EXPECT_EQ(result.hub, HubState::Flash);
}

TEST_F(VerifiedFlash, IsReadAgainBeforeItCountsAsDifferent)
{
    addFault({.kind = FaultKind::Flip, .on = RequestKind::Read, .position = 1, .amount = 7});
    EXPECT_FALSE(verify(demoImage()));
    failedWith({.step = Step::Read, .cause = Cause::Unstable, .address = 7, .wrongBytes = 1});
    EXPECT_EQ(result.hub, HubState::Flash);
}

TEST_F(VerifiedFlash, AndTheHubIsSentBackIfItCannotBeRead)
{
    addFault({.kind = FaultKind::Stall, .on = RequestKind::Read, .position = 3});
    EXPECT_FALSE(verify(demoImage()));
    EXPECT_EQ(result.cause, Cause::RequestFailed);
    EXPECT_EQ(result.failure, HubFailure::Stalled);
    EXPECT_EQ(result.hub, HubState::Flash);
}

TEST_F(VerifiedFlash, IsNotReadForAnImageThatDoesNotFit)
{
    EXPECT_FALSE(verify({}));
    EXPECT_FALSE(verify(std::vector<std::uint8_t>(kSimulatedFlashSize + 1)));
    failedWith({.step = Step::Open, .cause = Cause::WrongImage});
    EXPECT_EQ(setup.hub().requestCount(), 0U);
}

TEST_F(RestartedHub, StaysInItsRomCodeUntilItIsSentBack)
{
    EXPECT_TRUE(restart(HUB_MODE_ROM));
    EXPECT_EQ(setup.hub().runningCode(), HubCode::Rom);
    EXPECT_EQ(result.hub, HubState::Rom);
    const auto before = setup.hub().attachedHalves().front().session;
    EXPECT_TRUE(restart(HUB_MODE_ROM));
    EXPECT_EQ(setup.hub().attachedHalves().front().session, before) << "it was there already";
    EXPECT_TRUE(restart(HUB_MODE_FLASH));
    EXPECT_EQ(setup.hub().runningCode(), HubCode::Flash);
    EXPECT_EQ(result.hub, HubState::Flash);
    EXPECT_EQ(steps, (std::vector{Step::Open, Step::Restart}));
}

TEST_F(RestartedHub, IsNoSuccessWithTheWrongCode)
{
    addFault({.kind = FaultKind::SameMode, .position = 1});
    EXPECT_FALSE(restart(HUB_MODE_ROM));
    failedWith(
        {.step = Step::Restart, .cause = Cause::NotConfirmed, .failure = HubFailure::NoRomCode});
    ASSERT_TRUE(setup.hub().setFlash(std::vector<std::uint8_t>(kSimulatedFlashSize, 0xFF)));
    EXPECT_FALSE(restart(HUB_MODE_FLASH));
    failedWith(
        {.step = Step::Restart, .cause = Cause::NotConfirmed, .failure = HubFailure::NoFlashCode});
    EXPECT_EQ(result.hub, HubState::Rom);
}

TEST_F(RestartedHub, IsLookedAtIfItDidNotRestart)
{
    addFault({.kind = FaultKind::Ignore, .on = RequestKind::Rom});
    EXPECT_FALSE(restart(HUB_MODE_ROM));
    failedWith(
        {.step = Step::Restart, .cause = Cause::NotRestarted, .failure = HubFailure::NotRestarted});
    EXPECT_EQ(result.hub, HubState::Flash);
    addFault({.kind = FaultKind::VanishBefore, .on = RequestKind::Rom});
    EXPECT_FALSE(restart(HUB_MODE_ROM));
    EXPECT_EQ(result.hub, HubState::Absent);
}

TEST_F(RestartedHub, IsAskedInTheseWords)
{
    std::vector<std::string> requests;
    Hub_ObserveRequests([&](const ControlRequest& request, std::uint32_t status) {
        requests.push_back(Hub_RequestText(request) + ": " + std::to_string(status));
    });
    addFault({.kind = FaultKind::Stall, .on = RequestKind::Write, .position = 2});
    EXPECT_TRUE(restart(HUB_MODE_ROM));
    EXPECT_THAT(requests,
                testing::ElementsAre("open-time request: 0", "read the status block: 0",
                                     "read the status block: 0", "restart into ROM code: 0",
                                     "open-time request: 0", "read the status block: 0"));
    EXPECT_FALSE(update());
    EXPECT_THAT(requests, testing::Contains("erase the flash: 0"));
    EXPECT_THAT(requests, testing::Contains("write 4096 bytes at 0x0000: 0"));
    EXPECT_THAT(requests, testing::Contains("write 4096 bytes at 0x1000: 1"));
    Hub_ObserveRequests({});
    EXPECT_TRUE(update());
    EXPECT_EQ(requests.back(), "read the status block: 0") << "the flow's last look at the hub";
}

} // namespace vornadel::test
