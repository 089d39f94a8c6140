#include "standins/virtual_hub/ServerConversation.h"

#include "tests/virtual_hub/Frames.h"
#include "tests/virtual_hub/HalfBench.h"

#include <gmock/gmock.h>

#include <map>
#include <string>

namespace vornadel::test
{
namespace
{

using Step = Conversation::Step;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// Hub 3 with both halves; each can be imported once.
class TwoHalves final : public ExportList
{
public:
    std::vector<ExportedDevice> devices() override
    {
        return {{"2-3", someDevice(HubSpeed::SuperSpeed)},
                {"1-3", someDevice(HubSpeed::HighSpeed)}};
    }
    OperationStatus import(const std::string& busId, ExportedDevice& device) override
    {
        asked.push_back(busId);
        for (const ExportedDevice& known : devices()) {
            if (known.busId == busId) {
                device = known;
                return answerOf.count(busId) != 0 ? answerOf.at(busId) : OperationStatus::Ok;
            }
        }
        return OperationStatus::NoDevice;
    }

    std::vector<std::string> asked;
    std::map<std::string, OperationStatus> answerOf;
};

Bytes textField(const std::string& text, std::size_t size)
{
    Bytes field(text.begin(), text.end());
    field.resize(size);
    return field;
}

/// The record of a device in the protocol.
const Bytes kSuperSpeedRecord = textField("/vornadel-virtual-hub/2-3", 256) + textField("2-3", 32) +
                                word(2) + word(3) + word(5) +
                                Bytes{0x1A, 0x2B, 0x3C, 0x4D, 0x01, 0x00, 9, 0, 3, 0, 1, 1};
const Bytes kHighSpeedRecord = textField("/vornadel-virtual-hub/1-3", 256) + textField("1-3", 32) +
                               word(1) + word(3) + word(3) +
                               Bytes{0x1A, 0x2B, 0x3C, 0x4E, 0x01, 0x00, 9, 0, 1, 0, 1, 1};
const Bytes kHubInterface = {9, 0, 0, 0};

class ServerTalk : public testing::Test
{
protected:
    Step tell(const Bytes& in)
    {
        m_out.clear();
        return m_talk.step(in, m_taken, m_out);
    }

    TwoHalves m_list;
    ServerConversation m_talk{m_list};
    Bytes m_out;
    std::size_t m_taken = 0;
};

TEST_F(ServerTalk, ListsTheDevicesAndEnds)
{
    EXPECT_EQ(tell(listFrame()), Step::Ends);
    EXPECT_EQ(m_taken, 8U);
    EXPECT_EQ(m_out, (Bytes{0x01, 0x11, 0x00, 0x05, 0, 0, 0, 0}) + word(2) + kSuperSpeedRecord +
                         kHubInterface + kHighSpeedRecord + kHubInterface);
    EXPECT_EQ(tell(listFrame()), Step::Ends);
    EXPECT_THAT(m_out, IsEmpty());
}

TEST_F(ServerTalk, HandsADeviceOverAndThenItsTransfers)
{
    EXPECT_EQ(tell(importFrame("2-3")), Step::Answered);
    EXPECT_EQ(m_taken, 40U);
    EXPECT_EQ(m_out, (Bytes{0x01, 0x11, 0x00, 0x03, 0, 0, 0, 0}) + kSuperSpeedRecord);
    EXPECT_THAT(m_out, SizeIs(8 + 312));
    EXPECT_EQ(tell(frame({1, 1, 0, 1, {0x80, 8, 0, 0, 0, 0, 1, 0}})), Step::Answered);
    EXPECT_EQ(m_out, answer(1, 0, 1, {0}));
    EXPECT_EQ(tell(listFrame() + Bytes(40)), Step::Ends); // too late for requests
}

TEST_F(ServerTalk, SaysWhyItDoesNotHandADeviceOver)
{
    EXPECT_EQ(tell(importFrame("9-9")), Step::Ends);
    EXPECT_EQ(m_out, (Bytes{0x01, 0x11, 0x00, 0x03, 0, 0, 0, 4}));
    m_list.answerOf["2-3"] = OperationStatus::Busy;
    EXPECT_EQ(tell(importFrame("2-3")), Step::Ends);
    EXPECT_EQ(m_out, (Bytes{0x01, 0x11, 0x00, 0x03, 0, 0, 0, 2}));
}

TEST_F(ServerTalk, ImportsNothingOnceItIsToLeave)
{
    m_talk.leave(m_out);
    EXPECT_THAT(m_out, IsEmpty());
    EXPECT_EQ(tell(importFrame("2-3")), Step::Ends);
    EXPECT_THAT(m_out, IsEmpty());
    EXPECT_THAT(m_list.asked, IsEmpty());
}

} // namespace
} // namespace vornadel::test
