// Whatever comes over a connection: no crash, no endless loop, no heap of memory.

#include "standins/virtual_hub/ServerConversation.h"
#include "tests/virtual_hub/Frames.h"
#include "tests/virtual_hub/HalfBench.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>

namespace vornadel::test
{
namespace
{

using Step = Conversation::Step;

/// Every name is a SuperSpeed half, whose vendor requests towards the host bring what was asked
/// for.
class Generous final : public ExportList
{
public:
    std::vector<ExportedDevice> devices() override { return {{"2-3", device()}}; }
    OperationStatus import(const std::string& busId, ExportedDevice& exported) override
    {
        exported = {busId, device()};
        return OperationStatus::Ok;
    }

private:
    static VirtualDevice device()
    {
        VirtualDevice device = someDevice(HubSpeed::SuperSpeed);
        device.vendorRequest = [](ControlRequest& request) {
            request.transferred = request.wLength();
            return 0U;
        };
        return device;
    }
};

/// Hands bytes over in pieces as a link does, and holds every promise of a step to account. Returns
/// how many messages were answered.
unsigned converse(Conversation& talk, const Bytes& bytes, std::mt19937& random)
{
    unsigned answered = 0;
    Bytes in;
    std::size_t given = 0;
    while (given < bytes.size()) {
        const std::size_t piece = std::min<std::size_t>(bytes.size() - given, 1 + random() % 97);
        in.insert(in.end(), bytes.begin() + static_cast<std::ptrdiff_t>(given),
                  bytes.begin() + static_cast<std::ptrdiff_t>(given + piece));
        given += piece;
        for (;;) {
            std::size_t taken = 0;
            Bytes out;
            const Step step = talk.step(in, taken, out);
            EXPECT_LE(taken, in.size());
            EXPECT_LE(out.size(), std::size_t{48 + 0xFFFF});
            if (step == Step::Ends) {
                return answered;
            }
            if (step == Step::Waits) {
                EXPECT_EQ(taken, 0U);
                EXPECT_TRUE(out.empty());
                EXPECT_LT(in.size(), Conversation::kLongestMessage);
                break;
            }
            EXPECT_GT(taken, 0U);
            ++answered;
            in.erase(in.begin(), in.begin() + static_cast<std::ptrdiff_t>(taken));
        }
    }
    return answered;
}

Bytes noise(std::size_t size, std::mt19937& random)
{
    Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
    return bytes;
}

std::uint32_t number(std::mt19937& random) { return static_cast<std::uint32_t>(random()); }

/// A message that is nearly right.
Bytes nearlyRight(std::mt19937& random)
{
    const std::uint32_t length = number(random) % 300;
    const bool in = random() % 2 == 0;
    Submit submit = {number(random), in ? 1U : 0U, number(random) % 3, length, noise(8, random)};
    submit.setup[0] =
        static_cast<std::uint8_t>((random() % 4) << 5 | (random() % 4) | (in ? 0x80 : 0));
    submit.setup[1] = static_cast<std::uint8_t>(random() % 50);
    submit.setup[6] = static_cast<std::uint8_t>(length);
    submit.setup[7] = static_cast<std::uint8_t>(length >> 8);
    if (!in) {
        submit.data = noise(length, random);
    }
    Bytes bytes =
        random() % 5 == 0 ? unlinkFrame(number(random), number(random) % 64) : frame(submit);
    if (random() % 40 == 0) {
        bytes[random() % bytes.size()] ^= static_cast<std::uint8_t>(1U << random() % 8);
    }
    return bytes;
}

TEST(HostileInput, MayBeNoise)
{
    std::mt19937 random(1);
    Generous list;
    for (int run = 0; run < 2000; ++run) {
        ServerConversation talk(list);
        converse(talk, noise(random() % 400, random), random);
    }
}

TEST(HostileInput, MayBeNoiseAfterAnImport)
{
    std::mt19937 random(2);
    Generous list;
    for (int run = 0; run < 2000; ++run) {
        ServerConversation talk(list);
        EXPECT_GE(converse(talk, importFrame("any") + noise(random() % 400, random), random), 1U);
    }
}

TEST(HostileInput, MayBeNearlyRight)
{
    std::mt19937 random(3);
    Generous list;
    unsigned answered = 0;
    for (int run = 0; run < 500; ++run) {
        ServerConversation talk(list);
        Bytes bytes = importFrame("any");
        for (int message = 0; message < 30; ++message) {
            bytes = bytes + nearlyRight(random);
        }
        answered += converse(talk, bytes, random);
        Bytes out;
        talk.leave(out);
        EXPECT_LE(out.size(), UrbExchange::kMostPending * 48);
    }
    EXPECT_GT(answered, 500U * 10); // most of it was taken seriously
}

TEST(HostileInput, MayAskForMuch)
{
    Generous list;
    ServerConversation talk(list);
    std::mt19937 random(4);
    const Submit greedy = {1, 1, 0, 0xFFFFFFFF, {0xC0, 0xD8, 0, 0, 0, 0, 0xFF, 0xFF}};
    EXPECT_EQ(converse(talk, importFrame("any") + frame(greedy), random), 2U);
}

} // namespace
} // namespace vornadel::test
