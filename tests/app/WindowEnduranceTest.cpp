// A day on a production line: a thousand updates, and a system without free resources.

#include "tests/app/ToolUnderTest.h"

#include "hub/HubTransport.h"
#include "standins/sim/DemoImage.h"
#include "tests/support/NoMoreThreads.h"
#include "tests/support/Resources.h"

#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

#include <iostream>

namespace vornadel::test
{

namespace
{

constexpr int kUpdates = 1000;
constexpr int kWarmUp = 100;

class WindowEndurance : public ToolUnderTest
{
protected:
    void SetUp() override
    {
        launchAndSettle();
        chooseByTyping(tool().btnSelect_EasyUpdate,
                       QString::fromStdString(writeFile("demo.bin", m_image)));
    }

    /// Presses "Update" and waits for its end.
    void update()
    {
        QTest::mouseClick(tool().btnUpdate_EasyUpdate, Qt::LeftButton);
        EXPECT_TRUE(waitUntilEnabled());
        settleEvents();
        EXPECT_FALSE(Hub_IsOpen());
    }

    bool saysSuccess() { return progressText().ends_with("Update FW Success\n"); }

    const std::vector<std::uint8_t> m_image = demoImage(kDemoVersion101);
};

TEST_F(WindowEndurance, AThousandUpdatesLeaveNothingBehind)
{
    Resources early{};
    for (int done = 0; done < kWarmUp + kUpdates && !HasFailure(); ++done) {
        if (done == kWarmUp) {
            early = Resources::now();
        }
        EXPECT_TRUE(hub().setFlash(demoImage()));
        update();
        EXPECT_TRUE(saysSuccess());
        clock().forgetPauses();
    }
    const Resources late = Resources::now();
    std::cout << kUpdates << " updates; heap " << early.bytes << " -> " << late.bytes
              << " bytes, descriptors " << early.descriptors << " -> " << late.descriptors << '\n';
    // The smallest leak per update would be this much.
    EXPECT_LT(late.bytes, early.bytes + std::size_t{24} * kUpdates);
    EXPECT_LE(late.descriptors, early.descriptors); // the file dialog may release its own late
}

TEST_F(WindowEndurance, AFlowThatFindsNoThreadIsToldAndMayBePressedAgain)
{
    for (QPushButton* button : {tool().btnUpdate_EasyUpdate, tool().btnRead_FwFlash,
                                tool().btnErase_FwFlash, tool().nsbtnUpdate_Scalar}) {
        const NoMoreThreads none;
        QTest::mouseClick(button, Qt::LeftButton);
        EXPECT_TRUE(allSwitched(true));
        EXPECT_EQ(progressText(), "Fail to start: the system cannot start a thread\n");
        EXPECT_EQ(hueOf(*tool().nstfUpdateInfo_UpdateFW), kRedHue);
    }
    update();
    EXPECT_TRUE(saysSuccess());
}

} // namespace

} // namespace vornadel::test
