#include "hub/HubDetection.h"
#include "tests/hub/HubTest.h"

#include <algorithm>

namespace vornadel::test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Detection : public HubTest
{
protected:
    // Answers the status block with a version, or fails it.
    void answerVersion(std::uint16_t version, std::uint32_t status = 0)
    {
        m_bus.onControl([=](ControlRequest& request) {
            if (request.bRequest == 0x09) {
                std::fill(request.in.begin(), request.in.end(), std::uint8_t{0xEE});
                request.in[10] = static_cast<std::uint8_t>(version >> 8);
                request.in[11] = static_cast<std::uint8_t>(version & 0xFF);
                return status;
            }
            return 0U;
        });
    }
};

TEST_F(Detection, ReadsTheVersionOfTheHub)
{
    answerVersion(0x0105);
    const HubDetection detection = Hub_Detect();
    EXPECT_TRUE(detection.found);
    EXPECT_EQ(detection.version, 0x0105);
    EXPECT_THAT(m_bus.events(), ElementsAre("search", "drop 0", "end of list", "search", "open 0",
                                            "close 0", "drop 0"));
    EXPECT_THAT(m_bus.requests(),
                ElementsAre(kOpenTime, SeenRequest{{0xC0, 0x09, 0, 0, 0, 0, 32, 0}}));
}

TEST_F(Detection, OpensNothingWithoutASupportedHub)
{
    m_bus.attached = {{0x2222, 0x0001}};
    EXPECT_FALSE(Hub_Detect().found);
    EXPECT_THAT(m_bus.events(), ElementsAre("search", "drop 0", "end of list"));
    EXPECT_EQ(LastError, 0);
}

TEST_F(Detection, KeepsTheVersionAtAllOnesForAHubThatRefuses)
{
    m_bus.attached = {{kVendor, kSuperSpeed, UsbOpenStatus::NoAccess}};
    const HubDetection detection = Hub_Detect();
    EXPECT_TRUE(detection.found);
    EXPECT_EQ(detection.version, 0xFFFF);
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_THAT(m_bus.requests(), IsEmpty());
}

TEST_F(Detection, GivesVersionZeroWhenTheStatusBlockCannotBeRead)
{
    answerVersion(0x1234, 0xE0004051);
    const HubDetection detection = Hub_Detect();
    EXPECT_TRUE(detection.found);
    EXPECT_EQ(detection.version, 0);
    EXPECT_FALSE(Hub_IsOpen());
}

TEST_F(Detection, LeavesTheHubOfAFlowAlone)
{
    open();
    onAnotherThread([] {
        const HubDetection detection = Hub_Detect();
        EXPECT_TRUE(detection.found);
        EXPECT_EQ(detection.version, 0xFFFF);
    });
    EXPECT_TRUE(Hub_IsOpen());
    EXPECT_THAT(m_bus.events(), ElementsAre("search", "drop 0", "end of list"));
    EXPECT_THAT(m_bus.requests(), IsEmpty());
}

} // namespace
} // namespace vornadel::test
