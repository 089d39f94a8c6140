#include "tests/flows/StrictFlow.h"
#include "hub/HubTransport.h"

#include <gtest/gtest.h>

#include <chrono>

namespace vornadel::test
{

using namespace std::chrono_literals;

TEST_F(StrictFlow, TakesOnlyTheTimeOfTheHubAndThePauseAfterTheErase)
{
    EXPECT_TRUE(update());
    EXPECT_EQ(setup.hub().flash(), bytes);
    // Two restarts of 700 ms, an erase of 150 ms, 128 pages of 0.7 ms.
    EXPECT_EQ(setup.clock.now(), 2 * 700ms + 150ms + 128 * 700us + 128ms);
}

TEST_F(StrictFlow, OpensAHubThatRefusesAtFirstEvery50Ms)
{
    addFault({.kind = FaultKind::OpenRefused, .position = 2, .amount = 3});
    EXPECT_TRUE(read());
    // The hub's second device arrives together with its first, and each arrival is one attempt.
    EXPECT_GE(setup.clock.now(), 2 * 700ms + 50ms);
    EXPECT_LE(setup.clock.now(), 2 * 700ms + 3 * 50ms);
}

TEST_F(StrictFlow, KnowsTheHubByAnySerialNumberThatItsImageGives)
{
    ASSERT_TRUE(FwImage_SetStrings(image, "Maker", "Hub", "N\xE9\x07\x7F\x9F\xA0-1"));
    EXPECT_TRUE(update());
}

TEST_F(StrictFlow, IsNoSuccessAfterARestartThatWasIgnored)
{
    addFault({.kind = FaultKind::Ignore, .on = RequestKind::Flash, .position = 1});
    EXPECT_FALSE(update());
    failedWith(
        {.step = Step::Restart, .cause = Cause::NotRestarted, .failure = HubFailure::NotRestarted});
    addFault({.kind = FaultKind::Ignore, .on = RequestKind::Flash});
    EXPECT_FALSE(erase());
    failedWith(
        {.step = Step::Restart, .cause = Cause::NotRestarted, .failure = HubFailure::NotRestarted});
}

TEST_F(StrictFlow, IsNoSuccessIfTheHubReturnsInRomCode)
{
    addFault({.kind = FaultKind::SameMode, .position = 2});
    EXPECT_FALSE(update());
    failedWith(
        {.step = Step::Restart, .cause = Cause::NotConfirmed, .failure = HubFailure::NoFlashCode});
}

TEST_F(StrictFlow, IsNoSuccessIfTheHubRunsAnotherVersion)
{
    setup.hub().onRequest = [this](const ControlRequest& request) {
        if (request.bRequest == 0xE9) {
            ASSERT_TRUE(setup.hub().setFlash(demoImage()));
        }
    };
    EXPECT_FALSE(update());
    failedWith(
        {.step = Step::Restart, .cause = Cause::NotConfirmed, .failure = HubFailure::OtherVersion});
}

TEST_F(StrictFlow, IsNoSuccessIfTheHubDoesNotTellWhatItRuns)
{
    addFault({.kind = FaultKind::Stall, .on = RequestKind::Status, .position = 4});
    EXPECT_FALSE(update());
    failedWith(
        {.step = Step::Restart, .cause = Cause::NotConfirmed, .failure = HubFailure::Stalled});
}

TEST_F(StrictFlow, DoesNotWaitForAHubThatIsNotThere)
{
    options.hub.place = {{"sim-1", 1}, {}};
    setup.hub().unplug();
    EXPECT_FALSE(update());
    failedWith({.step = Step::Open, .cause = Cause::NotOpened, .failure = HubFailure::NoHub});
    EXPECT_EQ(setup.clock.now(), 0s);
}

TEST_F(StrictFlow, DoesNotWaitForTheHubOnceTheProgramIsEnding)
{
    Clock::Duration then{};
    setup.hub().onRequest = [&](const ControlRequest& request) {
        if (request.bRequest == 0xE9) {
            then = setup.clock.now();
            Hub_Abandon();
        }
    };
    EXPECT_FALSE(update());
    failedWith(
        {.step = Step::Restart, .cause = Cause::NotRestarted, .failure = HubFailure::Abandoned});
    EXPECT_EQ(setup.clock.now(), then);
}

TEST_F(StrictFlow, ExpectsNoSerialNumberOfAnErasedHub)
{
    setup.hub().onRequest = [this](const ControlRequest& request) {
        if (request.bRequest == 0xE9) { // as if its ROM code had a serial number of its own
            ASSERT_TRUE(setup.hub().setFlash(demoImage(kDemoVersion100, 2)));
        }
    };
    EXPECT_TRUE(erase());
}

TEST_F(StrictFlow, WaitsAsLongAsTheWindowForAHubThatDoesNotReturn)
{
    addFault({.kind = FaultKind::Never, .position = 2});
    const Clock::Duration before = setup.clock.now();
    EXPECT_FALSE(read());
    failedWith(
        {.step = Step::Restart, .cause = Cause::NotRestarted, .failure = HubFailure::NotReturned});
    EXPECT_EQ(setup.clock.now() - before, 700ms + 40s);
    ASSERT_EQ(waits.size(), 39U) << "one word a second, the end has its own";
    EXPECT_EQ(waits.front(), 1s);
    EXPECT_EQ(waits.back(), 39s);
    EXPECT_EQ(flash, setup.hub().flash()) << "all of it was read";
}

TEST_F(StrictFlow, LooksWhetherTheFlashIsBlankAfterAnErase)
{
    addFault({.kind = FaultKind::Ignore, .on = RequestKind::Erase, .position = 1});
    EXPECT_FALSE(erase());
    EXPECT_EQ(result.cause, Cause::NotErased);
    const std::vector<std::uint8_t> before = demoImage();
    EXPECT_EQ(result.address, std::find_if(before.begin(), before.end(), [](auto byte) {
                                  return byte != 0xFF;
                              }) - before.begin());
    EXPECT_EQ(result.wrongBytes,
              std::count_if(before.begin(), before.end(), [](auto byte) { return byte != 0xFF; }));
    EXPECT_TRUE(erase());
}

TEST_F(StrictFlow, ReadsTheFlashTwice)
{
    addFault({.kind = FaultKind::Flip, .on = RequestKind::Read, .position = 16, .amount = 4095});
    EXPECT_FALSE(read());
    failedWith({.step = Step::Read, .cause = Cause::Unstable, .address = 32767, .wrongBytes = 1});
    EXPECT_TRUE(flash.empty());
}

TEST_F(StrictFlow, SendsAHubBackThatItCannotRead)
{
    for (const unsigned position : {3U, 14U}) { // in the first read, and in the second of the next
                                                // run
        addFault({.kind = FaultKind::Stall, .on = RequestKind::Read, .position = position});
        EXPECT_FALSE(read());
        EXPECT_EQ(result.cause, Cause::RequestFailed);
        EXPECT_EQ(result.hub, HubState::Flash);
    }
}

TEST_F(StrictFlow, ReadsNothingFromAHubThatDeliversNothing)
{
    for (unsigned piece = 1; piece <= 16; ++piece) {
        addFault({.kind = FaultKind::Ignore, .on = RequestKind::Read, .position = piece});
    }
    EXPECT_FALSE(read());
    EXPECT_EQ(result.cause, Cause::Unstable);
    EXPECT_EQ(result.wrongBytes, kSimulatedFlashSize);
    EXPECT_TRUE(flash.empty());
}

TEST_F(StrictFlow, StopsBeforeTheEraseAndSendsTheHubBack)
{
    setup.hub().onRequest = [this](const ControlRequest& request) {
        isAskedToStop = isAskedToStop || request.bRequest == 0x00;
    };
    EXPECT_FALSE(update());
    failedWith({.step = Step::Open, .cause = Cause::Interrupted});
    EXPECT_EQ(setup.hub().flash(), demoImage());
    EXPECT_EQ(setup.hub().runningCode(), HubCode::Flash);
    const unsigned requests = setup.hub().requestCount();
    EXPECT_FALSE(update());
    EXPECT_EQ(setup.hub().requestCount(), requests) << "asked before it began";
}

TEST_F(StrictFlow, LeavesAHubThatItHasNotRestartedAsItIsWhenStopped)
{
    EXPECT_TRUE(restart(HUB_MODE_ROM));
    ASSERT_EQ(setup.hub().runningCode(), HubCode::Rom);
    setup.hub().onRequest = [this](const ControlRequest&) { isAskedToStop = true; };
    EXPECT_FALSE(read());
    failedWith({.step = Step::Open, .cause = Cause::Interrupted});
    EXPECT_EQ(setup.hub().runningCode(), HubCode::Rom);
}

TEST_F(StrictFlow, StopsAReadBetweenTwoPieces)
{
    for (const unsigned last : {1U, 8U, 9U}) { // of eight for each of two reads
        SCOPED_TRACE(last);
        unsigned pieces = 0;
        isAskedToStop = false;
        setup.hub().onRequest = [&](const ControlRequest& request) {
            pieces += request.bRequest == 0xD8 ? 1 : 0;
            isAskedToStop = pieces == last;
        };
        EXPECT_FALSE(read());
        failedWith({.step = Step::Read, .cause = Cause::Interrupted});
        EXPECT_EQ(pieces, last);
        EXPECT_TRUE(flash.empty());
        EXPECT_EQ(setup.hub().runningCode(), HubCode::Flash);
    }
}

TEST_F(StrictFlow, FinishesOnceItHasErased)
{
    setup.hub().onRequest = [this](const ControlRequest& request) {
        isAskedToStop = isAskedToStop || request.bRequest == 0xE8;
    };
    EXPECT_TRUE(update());
    EXPECT_EQ(setup.hub().flash(), bytes);
}

TEST_F(StrictFlow, HasFreedThePlaceWhenItSaysThatItIsOver)
{
    ToldValues told;
    std::unique_ptr<PlaceLock> lock;
    told.onClosed = [&] {
        PlaceOwner owner;
        lock = setup.bus->placeLocks().lock({{"sim-1", 1}, {}}, {}, owner);
    };
    EXPECT_TRUE(eraseFlash(told, options));
    EXPECT_NE(lock, nullptr);
}

TEST_F(StrictFlow, FailsAtOnceIfAnotherHasThePlace)
{
    PlaceOwner owner;
    const auto lock = setup.bus->placeLocks().lock({{"sim-1", 1}, {}}, {}, owner);
    ASSERT_NE(lock, nullptr);
    EXPECT_FALSE(update());
    EXPECT_EQ(result.failure, HubFailure::Busy);
    EXPECT_EQ(setup.clock.now(), 0s);
    EXPECT_EQ(setup.hub().requestCount(), 0U);
}

} // namespace vornadel::test
