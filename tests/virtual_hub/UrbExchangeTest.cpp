#include "standins/virtual_hub/UrbExchange.h"

#include "tests/virtual_hub/Frames.h"
#include "tests/virtual_hub/SomeDevice.h"

#include <gmock/gmock.h>

namespace vornadel::test
{
namespace
{

using Step = Conversation::Step;
using testing::IsEmpty;

/// Sends one message and returns the answer.
Bytes answerOf(UrbExchange& exchange, const Submit& submit)
{
    const Bytes in = frame(submit);
    Bytes out;
    std::size_t taken = 0;
    EXPECT_EQ(exchange.step(in, taken, out), Step::Answered);
    EXPECT_EQ(taken, in.size());
    return out;
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

TEST(Exchange, RefusesASetupPacketThatContradictsTheTransfer)
{
    UrbExchange exchange(someDevice(HubSpeed::SuperSpeed));
    const Bytes stalled = answer(1, -32, 0);
    EXPECT_EQ(answerOf(exchange, {1, 0, 0, 18, {0x80, 6, 0, 1, 0, 0, 18, 0}, Bytes(18)}), stalled);
    EXPECT_EQ(answerOf(exchange, {1, 1, 0, 6, {0x00, 48, 0, 0, 0, 0, 6, 0}}), stalled);
    EXPECT_EQ(answerOf(exchange, {1, 0, 0, 3, {0x00, 48, 0, 0, 0, 0, 6, 0}, Bytes(3)}), stalled);
}

TEST(Exchange, RefusesToKeepEndlesslyMany)
{
    UrbExchange exchange(someDevice(HubSpeed::SuperSpeed));
    for (std::uint32_t sequence = 1; sequence <= 64; ++sequence) {
        EXPECT_THAT(answerOf(exchange, statusRequest(sequence)), IsEmpty());
    }
    EXPECT_EQ(answerOf(exchange, statusRequest(65)), answer(65, -32, 0));
}

TEST(Exchange, EndsWithWhoDoesNotKeepToTheProtocol)
{
    const Bytes messages[] = {
        Bytes(48),                       // command 0
        word(3) + Bytes(44),             // an answer
        frame(Submit{1, 2, 0, 0}),       // a third direction
        frame(Submit{1, 1, 16, 0}),      // a 17th endpoint
        frame(Submit{1, 0, 0, 0x10000}), // more than a control transfer can carry
        frame(Submit{1, 0, 1, 0xFFFFFFFF}),
        frame(Submit{1, 1, 1, 2, Bytes(8), {}, 1}),             // isochronous
        frame(Submit{1, 1, 0, 0, Bytes(8), {}, 0, 0x00010001}), // another device
    };
    UrbExchange exchange(someDevice(HubSpeed::SuperSpeed));
    for (const Bytes& message : messages) {
        Bytes out;
        std::size_t taken = 0;
        EXPECT_EQ(exchange.step(message, taken, out), Step::Ends);
        EXPECT_THAT(out, IsEmpty());
    }
}

} // namespace
} // namespace vornadel::test
