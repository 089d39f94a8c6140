#include "hub/AttachedHubs.h"

#include "tests/hub/HubTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vornadel::test
{

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

ScriptedDevice half(std::uint16_t productId, const std::string& path, const std::string& peer = "")
{
    return {.vendorId = kVendor,
            .productId = productId,
            .place = {{path, 1}, {peer, 0}},
            .texts = {.product = {}, .serialNumber = path}};
}

class AttachedHubs : public HubTest
{
protected:
    /// "PLACE SSPID/HSPID PRODUCTSERIAL" of each hub.
    std::vector<std::string> listed()
    {
        std::vector<std::string> texts;
        const std::optional<std::vector<AttachedHub>> hubs = Hub_ListHubs(m_bus);
        for (const AttachedHub& hub : hubs.value()) {
            const UsbTexts its = hub.texts();
            std::ostringstream text;
            text << hub.place().text() << ' ' << std::hex << hub.superSpeedId << '/'
                 << hub.highSpeedId << ' ' << its.product << its.serialNumber;
            texts.push_back(text.str());
        }
        return texts;
    }
};

} // namespace

TEST_F(AttachedHubs, AreOneForBothHalvesOfAConnector)
{
    SupportedIdList[1] = {0, kVendor, kHighSpeed, 1};
    SupportedIdList[2] = {1, 0x9999, kHighSpeed, 1};
    m_bus.attached = {half(kHighSpeed, "1-3", "2-3"),
                      half(kSuperSpeed, "2-4", "1-4"),
                      {0x1111, 0x2222},
                      half(kSuperSpeed, "2-3", "1-3")};
    m_bus.attached[0].texts = {};
    m_bus.attached[1].texts = {.product = "Hub"};
    EXPECT_THAT(listed(), ElementsAre("2-3/1-3 3300/2200 2-3", "2-4/1-4 3300/0 Hub"));
    for (const std::string& event : m_bus.events()) {
        EXPECT_FALSE(event.starts_with("open")) << event;
    }
}

TEST_F(AttachedHubs, AreToldApartByTheirIdsWhereThePlatformTellsNoSecondPort)
{
    m_bus.attached = {half(kSuperSpeed, "20-2"), half(kHighSpeed, "20-6")};
    EXPECT_THAT(listed(), ElementsAre("20-2 3300/2200 20-2"));
    m_bus.attached = {half(kHighSpeed, "20-6"), half(kSuperSpeed, "20-2")};
    EXPECT_THAT(listed(), ElementsAre("20-6 3300/2200 20-6"));
    SupportedIdList[1] = {1, 0x9999, kSuperSpeed, kHighSpeed};
    m_bus.attached[1].vendorId = 0x9999;
    EXPECT_EQ(listed().size(), 2U);
    m_bus.attached = {half(kSuperSpeed, "20-2"), half(kSuperSpeed, "20-6")};
    EXPECT_THAT(listed(), ElementsAre("20-2 3300/0 20-2", "20-6 3300/0 20-6"));
    m_bus.attached.push_back(half(kHighSpeed, "20-7"));
    EXPECT_EQ(listed().size(), 3U) << "it could belong to either";
}

TEST_F(AttachedHubs, AreNotJoinedIfOneIsWholeOrTellsItsConnector)
{
    const ScriptedDevice lone = half(kHighSpeed, "20-6");
    m_bus.attached = {half(kSuperSpeed, "2-3", "1-3"), lone};
    EXPECT_EQ(listed().size(), 2U);
    m_bus.attached = {lone, half(kSuperSpeed, "2-3", "1-3")};
    EXPECT_EQ(listed().size(), 2U);
    m_bus.attached = {half(kSuperSpeed, "20-2"), half(kHighSpeed, "20-2"), lone};
    EXPECT_EQ(listed().size(), 2U);
    m_bus.attached = {lone, half(kSuperSpeed, "20-2"), half(kHighSpeed, "20-2")};
    EXPECT_EQ(listed().size(), 2U);
}

TEST_F(AttachedHubs, AreNoneOnABusWithoutOneAndUnknownWithoutAList)
{
    m_bus.attached = {{0x1111, 0x2222}};
    EXPECT_THAT(listed(), IsEmpty());
    m_bus.givesList = false;
    EXPECT_FALSE(Hub_ListHubs(m_bus).has_value());
}

} // namespace vornadel::test
