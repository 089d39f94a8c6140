// A fault at every request of an update that was started in the window: whatever the window says
// then is true, its buttons are enabled again, and the next update succeeds.

#include "tests/app/ToolUnderTest.h"

#include "hub/HubTransport.h"
#include "standins/sim/DemoImage.h"

#include <QPushButton>
#include <QtTest>
#include <gtest/gtest.h>

#include <atomic>
#include <optional>

namespace vornadel::test
{

namespace
{

struct SweepRow {
    const char* name;
    FaultKind kind;
    std::optional<RequestKind> on; ///< count only these; none: every request
    unsigned atLeast;              ///< positions at which an update meets it
};

class FaultSweepInTheWindow : public ToolUnderTest, public testing::WithParamInterface<SweepRow>
{
protected:
    void SetUp() override
    {
        launchAndSettle();
        chooseByTyping(tool().btnSelect_EasyUpdate,
                       QString::fromStdString(writeFile("demo.bin", m_image)));
        hub().onRequest = [this](const ControlRequest& request) {
            if (request.bRequest == (GetParam().on == RequestKind::Write ? 0xC8 : 0xD8)) {
                ++m_transfers;
            }
        };
    }

    /// One update with the fault at the given request of it. True when it came that far.
    bool updateWithFaultAt(unsigned position)
    {
        const unsigned before = GetParam().on ? m_transfers.load() : hub().requestCount();
        const unsigned triggeredBefore = hub().faultsTriggered();
        hub().addFault({.kind = GetParam().kind,
                        .on = GetParam().on,
                        .position = before + position,
                        .amount = 1000});
        update();
        expectTheTruth();
        if (hub().faultsTriggered() == triggeredBefore) {
            return false;
        }
        hub().replug();
        settleEvents();
        update();
        EXPECT_TRUE(saysSuccess());
        EXPECT_EQ(hub().flash(), m_image);
        return true;
    }

private:
    void update()
    {
        QTest::mouseClick(tool().btnUpdate_EasyUpdate, Qt::LeftButton);
        EXPECT_TRUE(waitUntilEnabled());
        settleEvents();
    }

    bool saysSuccess() { return progressText().ends_with("Update FW Success\n"); }

    void expectTheTruth()
    {
        if (saysSuccess()) {
            EXPECT_EQ(hub().flash(), m_image);
            EXPECT_EQ(hueOf(*tool().nstfUpdateInfo_UpdateFW), kBlueHue);
        } else {
            EXPECT_TRUE(progressText().ends_with("Update FW Fail\n")) << progressText();
            EXPECT_EQ(hueOf(*tool().nstfUpdateInfo_UpdateFW), kRedHue);
        }
        EXPECT_TRUE(allSwitched(true));
        EXPECT_FALSE(Hub_IsOpen());
    }

    const std::vector<std::uint8_t> m_image = demoImage(kDemoVersion101);
    std::atomic<unsigned> m_transfers = 0; // writes, or reads, since the launch
};

} // namespace

TEST_P(FaultSweepInTheWindow, TellsTheTruthAndRecovers)
{
    unsigned position = 1;
    while (updateWithFaultAt(position) && !HasFailure()) {
        ++position;
    }
    EXPECT_GT(position, GetParam().atLeast);
}

INSTANTIATE_TEST_SUITE_P(
    EveryRequest, FaultSweepInTheWindow,
    testing::Values(SweepRow{"Stall", FaultKind::Stall, std::nullopt, 25},
                    SweepRow{"VanishBefore", FaultKind::VanishBefore, std::nullopt, 25},
                    SweepRow{"VanishAfter", FaultKind::VanishAfter, std::nullopt, 25},
                    SweepRow{"Ignore", FaultKind::Ignore, std::nullopt, 25},
                    SweepRow{"Torn", FaultKind::Torn, RequestKind::Write, 8},
                    SweepRow{"FlippedWrite", FaultKind::Flip, RequestKind::Write, 8},
                    SweepRow{"FlippedRead", FaultKind::Flip, RequestKind::Read, 8}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace vornadel::test
