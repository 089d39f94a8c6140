#include "tests/flows/StrictFlow.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace vornadel::test
{

namespace
{

/// A hub whose flash is handed over before a change.
class ChangedFlash : public StrictFlow
{
protected:
    ChangedFlash()
    {
        options.beforeChange = [this](std::span<const std::uint8_t> content) {
            EXPECT_EQ(erases, 0U);
            saved.assign(content.begin(), content.end());
            ++calls;
            return answer;
        };
        setup.hub().onRequest = [this](const ControlRequest& request) {
            erases += request.bRequest == 0xE8 ? 1 : 0;
            if (request.bRequest == 0xD8 && ++reads == stopsAtRead) {
                isAskedToStop = true;
            }
        };
    }

    void expectUnchanged()
    {
        EXPECT_EQ(erases, 0U);
        EXPECT_FALSE(result.changed);
        EXPECT_EQ(setup.hub().flash(), demoImage());
        EXPECT_EQ(setup.hub().runningCode(), HubCode::Flash);
        EXPECT_EQ(result.hub, HubState::Flash);
    }

    BeforeChange answer = BeforeChange::Go;
    std::vector<std::uint8_t> saved;
    unsigned calls = 0;
    unsigned erases = 0;
    unsigned reads = 0;
    unsigned stopsAtRead = 0;
};

} // namespace

TEST_F(ChangedFlash, IsHandedOverBeforeTheErase)
{
    EXPECT_TRUE(update());
    EXPECT_EQ(saved, demoImage());
    EXPECT_EQ(steps, (std::vector{Step::Open, Step::Save, Step::Erase, Step::Write, Step::Read,
                                  Step::Verify, Step::Restart}));
    EXPECT_TRUE(result.changed);
    EXPECT_EQ(result.flash, FlashState::Verified);
    EXPECT_EQ(result.hub, HubState::Flash);
    EXPECT_EQ(result.version, 0x0101);
    EXPECT_EQ(result.serialNumber, "SN0001");

    erases = 0;
    EXPECT_TRUE(erase());
    EXPECT_EQ(saved, bytes);
    EXPECT_EQ(result.flash, FlashState::Erased);
    EXPECT_EQ(result.hub, HubState::Rom);
}

TEST_F(ChangedFlash, StaysAsItIsIfItIsUpToDate)
{
    answer = BeforeChange::UpToDate;
    EXPECT_TRUE(restore(demoImage()));
    expectUnchanged();
    EXPECT_EQ(result.flash, FlashState::Verified);
    EXPECT_FALSE(update()) << "it was not";
    failedWith(
        {.step = Step::Restart, .cause = Cause::NotConfirmed, .failure = HubFailure::OtherVersion});
    EXPECT_EQ(result.flash, FlashState::Untouched);
}

TEST_F(ChangedFlash, StaysAsItIsIfItCouldNotBeSaved)
{
    answer = BeforeChange::NotSaved;
    EXPECT_FALSE(erase());
    failedWith({.step = Step::Save, .cause = Cause::NotSaved});
    expectUnchanged();
}

TEST_F(ChangedFlash, StaysAsItIsIfTheFlowIsStopped)
{
    answer = BeforeChange::Stop;
    EXPECT_FALSE(update());
    failedWith({.step = Step::Save, .cause = Cause::Interrupted});
    expectUnchanged();
    answer = BeforeChange::Go;
    for (const unsigned last : {1U, 9U, 16U}) { // of eight for each of two reads
        SCOPED_TRACE(last);
        reads = 0;
        stopsAtRead = last;
        isAskedToStop = false;
        EXPECT_FALSE(update());
        failedWith({.step = Step::Save, .cause = Cause::Interrupted});
        EXPECT_EQ(reads, last);
        expectUnchanged();
    }
}

TEST_F(ChangedFlash, StaysAsItIsIfItCannotBeReadTwiceAlike)
{
    addFault({.kind = FaultKind::Flip, .on = RequestKind::Read, .position = 16, .amount = 4095});
    EXPECT_FALSE(update());
    failedWith({.step = Step::Save, .cause = Cause::Unstable, .address = 32767, .wrongBytes = 1});
    expectUnchanged();
    addFault({.kind = FaultKind::Stall, .on = RequestKind::Read});
    EXPECT_FALSE(erase());
    failedWith({.step = Step::Save, .cause = Cause::RequestFailed, .failure = HubFailure::Stalled});
    expectUnchanged();
    EXPECT_EQ(calls, 0U);
}

TEST_F(ChangedFlash, TakesBackWhatIsNoImage)
{
    std::vector<std::uint8_t> content(kSimulatedFlashSize);
    for (std::size_t i = 0; i < content.size(); ++i) {
        content[i] = static_cast<std::uint8_t>(i * 7);
    }
    EXPECT_TRUE(restore(content));
    EXPECT_EQ(setup.hub().flash(), content);
    EXPECT_EQ(result.flash, FlashState::Verified);
    EXPECT_EQ(result.hub, HubState::Rom);
    content.push_back(0);
    EXPECT_FALSE(restore(content));
    failedWith({.step = Step::Open, .cause = Cause::WrongImage});
    EXPECT_FALSE(restore({}));
    failedWith({.step = Step::Open, .cause = Cause::WrongImage});
}

} // namespace vornadel::test
