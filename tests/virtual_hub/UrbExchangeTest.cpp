#include "standins/virtual_hub/UrbExchange.h"

#include "tests/virtual_hub/Frames.h"
#include "tests/virtual_hub/HalfBench.h"

#include <gmock/gmock.h>

namespace vornadel::test
{
namespace
{

using Step = Conversation::Step;
using testing::IsEmpty;

const Bytes kDescriptor = {18,   1,    0x00, 0x03, 9,    0, 3, 9, 0x2B,
                           0x1A, 0x4D, 0x3C, 0x00, 0x01, 1, 2, 3, 1};

/// Passes the bytes of one message and returns the answer.
Bytes answerOf(UrbExchange& exchange, const Bytes& in)
{
    Bytes out;
    std::size_t taken = 0;
    EXPECT_EQ(exchange.step(in, taken, out), Step::Answered);
    EXPECT_EQ(taken, in.size());
    return out;
}
Bytes answerOf(UrbExchange& exchange, const Submit& submit)
{
    return answerOf(exchange, frame(submit));
}

class Exchange : public testing::Test
{
protected:
    Bytes tell(const Bytes& in) { return answerOf(m_exchange, in); }
    Bytes tell(const Submit& submit) { return answerOf(m_exchange, submit); }
    void expectEnd(const Bytes& in)
    {
        Bytes out;
        std::size_t taken = 0;
        EXPECT_EQ(m_exchange.step(in, taken, out), Step::Ends);
        EXPECT_THAT(out, IsEmpty());
    }

    UrbExchange m_exchange{someDevice(HubSpeed::SuperSpeed)};
};

TEST_F(Exchange, AnswersATransferTowardsTheHost)
{
    EXPECT_EQ(tell(deviceDescriptorRequest(7)), answer(7, 0, 18, kDescriptor));
    EXPECT_EQ(tell(deviceDescriptorRequest(8, 8)),
              answer(8, 0, 8, {kDescriptor.begin(), kDescriptor.begin() + 8}));
}

TEST_F(Exchange, AnswersATransferTowardsTheDevice)
{
    EXPECT_EQ(tell(Submit{9, 0, 0, 6, {0x00, 48, 0, 0, 0, 0, 6, 0}, Bytes(6)}), answer(9, 0, 6));
    EXPECT_EQ(tell(Submit{10, 0, 0, 0, {0x00, 9, 1, 0, 0, 0, 0, 0}}), answer(10, 0, 0));
}

/// The write of a piece whose address is 0x00011234.
Submit vendorWrite(const Bytes& data)
{
    const auto size = static_cast<std::uint8_t>(data.size());
    return {1, 0, 0, size, {0x40, 0xC8, 0x34, 0x12, 0x01, 0x00, size, 0}, data};
}

TEST(VendorExchange, PassesARequestOnWithItsData)
{
    VirtualDevice device = someDevice(HubSpeed::SuperSpeed);
    Bytes written;
    device.vendorRequest = [&](ControlRequest& request) {
        EXPECT_EQ(request.bRequest, request.in.empty() ? 0xC8 : 0xD8);
        EXPECT_EQ(request.wValue, 0x1234);
        EXPECT_EQ(request.wIndex, 0x0001);
        written.assign(request.out.begin(), request.out.end());
        std::fill(request.in.begin(), request.in.end(), std::uint8_t{0x5A});
        request.transferred = request.wLength();
        return 0U;
    };
    UrbExchange exchange(device);
    EXPECT_EQ(answerOf(exchange, vendorWrite({7, 8, 9})), answer(1, 0, 3));
    EXPECT_EQ(written, (Bytes{7, 8, 9}));
    EXPECT_EQ(answerOf(exchange, {2, 1, 0, 4, {0xC0, 0xD8, 0x34, 0x12, 0x01, 0x00, 4, 0}}),
              answer(2, 0, 4, Bytes(4, 0x5A)));
}

TEST(VendorExchange, TellsHowMuchATornWriteMovedAndThatTheHubHasVanished)
{
    VirtualDevice device = someDevice(HubSpeed::SuperSpeed);
    bool present = true;
    device.vendorRequest = [&](ControlRequest& request) {
        request.transferred = present ? 2 : 0;
        return present ? kSimulatedShort : kSimulatedNoDevice;
    };
    UrbExchange exchange(device);
    EXPECT_EQ(answerOf(exchange, vendorWrite(Bytes(5))), answer(1, -32, 2));
    present = false;
    EXPECT_EQ(answerOf(exchange, vendorWrite(Bytes(5))), answer(1, -108, 0));
}

TEST_F(Exchange, AnswersARefusalWithAStall)
{
    EXPECT_EQ(tell(Submit{11, 1, 0, 4, {0x80, 0x77, 0, 0, 0, 0, 4, 0}}), answer(11, -32, 0));
    EXPECT_EQ(tell(Submit{12, 1, 2, 4}), answer(12, -32, 0)); // missing endpoints
    EXPECT_EQ(tell(Submit{13, 0, 1, 0}), answer(13, -32, 0));
}

TEST_F(Exchange, RefusesASetupPacketThatContradictsTheTransfer)
{
    EXPECT_EQ(tell(Submit{15, 0, 0, 18, {0x80, 6, 0, 1, 0, 0, 18, 0}, Bytes(18)}),
              answer(15, -32, 0));
    EXPECT_EQ(tell(Submit{16, 1, 0, 6, {0x00, 48, 0, 0, 0, 0, 6, 0}}), answer(16, -32, 0));
    EXPECT_EQ(tell(Submit{17, 0, 0, 3, {0x00, 48, 0, 0, 0, 0, 6, 0}, Bytes(3)}),
              answer(17, -32, 0));
}

TEST_F(Exchange, KeepsATransferOnTheStatusEndpointPending)
{
    EXPECT_THAT(tell(statusRequest(20)), IsEmpty());
    EXPECT_EQ(tell(unlinkFrame(21, 20)), unlinkAnswer(21, -104));
    EXPECT_EQ(tell(unlinkFrame(22, 20)), unlinkAnswer(22, 0)); // nothing left to cancel
}

TEST_F(Exchange, RefusesTransfersOnAHaltedEndpoint)
{
    tell(Submit{1, 0, 0, 0, {0x00, 9, 1, 0, 0, 0, 0, 0}});
    tell(Submit{2, 0, 0, 0, {0x02, 3, 0, 0, 0x81, 0, 0, 0}});
    EXPECT_EQ(tell(statusRequest(3)), answer(3, -32, 0));
    tell(Submit{4, 0, 0, 0, {0x02, 1, 0, 0, 0x81, 0, 0, 0}});
    EXPECT_THAT(tell(statusRequest(5)), IsEmpty());
}

TEST_F(Exchange, RefusesToKeepEndlesslyMany)
{
    for (std::uint32_t sequence = 1; sequence <= 64; ++sequence) {
        EXPECT_THAT(tell(statusRequest(sequence)), IsEmpty());
    }
    EXPECT_EQ(tell(statusRequest(65)), answer(65, -32, 0));
}

TEST_F(Exchange, AnswersWhatIsPendingAndWhatComesWhenTheDeviceLeaves)
{
    tell(statusRequest(40));
    tell(statusRequest(41));
    Bytes out;
    m_exchange.leave(out);
    EXPECT_EQ(out, answer(40, -108, 0) + answer(41, -108, 0));
    EXPECT_EQ(tell(deviceDescriptorRequest(42)), answer(42, -108, 0));
    EXPECT_EQ(tell(statusRequest(43)), answer(43, -108, 0));
    EXPECT_EQ(tell(unlinkFrame(44, 40)), unlinkAnswer(44, 0));
}

TEST_F(Exchange, EndsWithWhoDoesNotKeepToTheProtocol)
{
    expectEnd(Bytes(48));                       // command 0
    expectEnd(word(3) + Bytes(44));             // an answer
    expectEnd(frame(Submit{1, 2, 0, 0}));       // a third direction
    expectEnd(frame(Submit{1, 1, 16, 0}));      // a 17th endpoint
    expectEnd(frame(Submit{1, 0, 0, 0x10000})); // more than a control transfer can carry
    expectEnd(frame(Submit{1, 0, 1, 0xFFFFFFFF}));
    expectEnd(frame(Submit{1, 1, 1, 2, Bytes(8), {}, 1}));             // isochronous
    expectEnd(frame(Submit{1, 1, 0, 0, Bytes(8), {}, 0, 0x00010001})); // another device
}

} // namespace
} // namespace vornadel::test
