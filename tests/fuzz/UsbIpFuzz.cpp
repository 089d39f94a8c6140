// Messages of a client to the USB/IP server, down to the requests that the simulated hub behind it
// decodes.
//
// An input is a byte whose bit 0 says whether the hub runs its ROM code, a byte with the number of
// bytes that arrive at a time, minus one, and the bytes themselves.

#include "standins/virtual_hub/ServerConversation.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/virtual_hub/RecordingHost.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

using Step = Conversation::Step;

constexpr std::size_t kUrb = 48;
constexpr std::size_t kRecord = 312;
constexpr std::uint32_t kDone = 0;
constexpr auto kStalled = static_cast<std::uint32_t>(-32);
constexpr auto kCalledOff = static_cast<std::uint32_t>(-104);
constexpr auto kGone = static_cast<std::uint32_t>(-108);

/// A hub in memory. Its halves are offered as "1-1" and "2-1"; "busy" belongs to another client.
class OfferedHub : public ExportList
{
public:
    explicit OfferedHub(HubCode code) : m_hub(hubInMemory(m_clock, SimulatedLatency::None, code)) {}

    std::vector<ExportedDevice> devices() override
    {
        std::vector<ExportedDevice> offered;
        for (const AttachedHalf& half : m_hub->attachedHalves()) {
            const auto request = [this, half](ControlRequest& each) {
                m_hub->open(half);
                return m_hub->control(half, each);
            };
            offered.push_back({half.speed == HubSpeed::SuperSpeed ? "2-1" : "1-1",
                               {1, half.speed, half.vendorId, half.productId, half.otherProductId,
                                half.place, "SN", request, [] { return true; }}});
        }
        return offered;
    }

    OperationStatus import(const std::string& busId, ExportedDevice& device) override
    {
        for (ExportedDevice& offered : devices()) {
            if (offered.busId == busId) {
                device = offered;
                return OperationStatus::Ok;
            }
        }
        return busId == "busy" ? OperationStatus::Busy : OperationStatus::NoDevice;
    }

    std::size_t flashSize() const { return m_hub->flash().size(); }

private:
    VirtualClock m_clock;
    std::shared_ptr<SimulatedHub> m_hub;
};

/// One connection, with an independent check of each answer.
class Connection
{
public:
    explicit Connection(HubCode code) : m_hub(code), m_server(m_hub) {}

    void arrives(ByteView bytes)
    {
        m_in.insert(m_in.end(), bytes.begin(), bytes.end());
        while (!m_ended && step()) {
        }
    }

    void leaves()
    {
        const std::size_t before = m_out.size();
        m_server.leave(m_out);
        require(m_out.size() == before + kUrb * m_pending.size(),
                "what was pending is answered, each once");
        for (std::size_t i = 0; i < m_pending.size(); ++i) {
            const ByteView reply = ByteView(m_out).subspan(before + kUrb * i, kUrb);
            require(big32(reply, 0) == 3 && big32(reply, 4) == m_pending[i] &&
                        big32(reply, 20) == kGone,
                    "with the news that the device has left");
        }
        require(m_hub.flashSize() == 32768, "the flash keeps its size");
        if (m_imported && !m_ended) {
            requireNothingMore();
        }
    }

    const ByteBuffer& out() const { return m_out; }
    bool ended() const { return m_ended; }

private:
    bool step()
    {
        // A separate copy, so that reads past its end are detected.
        const ByteBuffer in = m_in;
        const std::size_t before = m_out.size();
        std::size_t taken = in.size() + 1;
        const Step step = m_server.step(in, taken, m_out);
        const ByteView reply = ByteView(m_out).subspan(before);
        require(taken <= in.size(), "no more is taken than there is");
        if (step == Step::Waits) {
            require(taken == 0 && reply.empty() && in.size() < Conversation::kLongestMessage,
                    "a wait takes and says nothing, and has an end");
            return false;
        }
        m_ended = step == Step::Ends;
        const ByteView message = ByteView(in).first(taken);
        if (m_imported) {
            requireAnswer(message, reply);
        } else {
            requireOperation(message, reply);
        }
        m_in.erase(m_in.begin(), m_in.begin() + static_cast<std::ptrdiff_t>(taken));
        return true;
    }

    void requireOperation(ByteView message, ByteView reply)
    {
        if (message.empty()) {
            require(m_ended && reply.empty(),
                    "what is no operation ends the connection without a word");
            return;
        }
        require(reply.size() >= 8 && big16(reply, 0) == 0x0111,
                "an operation is answered in its protocol");
        if (message.size() == 8) {
            require(m_ended && big16(reply, 2) == 0x0005 && big32(reply, 4) == 0,
                    "the list is the last word");
            require(reply.size() == 12 + big32(reply, 8) * (kRecord + 4), "it has its length");
            return;
        }
        require(message.size() == 40 && big16(reply, 2) == 0x0003, "an import is answered as one");
        m_imported = big32(reply, 4) == 0;
        require(reply.size() == (m_imported ? 8 + kRecord : 8), "with the device, or without");
        require(m_ended == !m_imported, "and transfers follow when there is one");
        if (m_imported) { // bus and device number, after path and bus id
            m_device = big32(reply, 8 + 288) << 16 | big32(reply, 8 + 292);
        }
    }

    void requireAnswer(ByteView message, ByteView reply)
    {
        if (m_ended) {
            require(message.empty() && reply.empty(),
                    "what is no transfer ends the connection without a word");
            return;
        }
        const bool unlink = big32(message, 0) == 2;
        const bool in = big32(message, 12) == 1;
        const std::uint32_t length = big32(message, 24);
        require(message.size() == kUrb + (unlink || in ? 0 : length),
                "a message is as long as it says");
        if (unlink) {
            const bool calledOff = std::erase(m_pending, big32(message, 20)) > 0;
            require(reply.size() == kUrb && big32(reply, 0) == 4 &&
                        big32(reply, 20) == (calledOff ? kCalledOff : kDone),
                    "an unlink says whether there was something to call off");
        } else if (reply.empty()) {
            require(in && big32(message, 16) == 1,
                    "only the status endpoint keeps its client waiting");
            m_pending.push_back(big32(message, 4));
            return;
        } else {
            requireTransferReply(in, length, reply);
        }
        require(big32(reply, 4) == big32(message, 4), "an answer names what it answers");
    }

    static void requireTransferReply(bool in, std::uint32_t length, ByteView reply)
    {
        require(reply.size() >= kUrb && big32(reply, 0) == 3, "a transfer is answered as one");
        const std::uint32_t status = big32(reply, 20);
        const std::uint32_t moved = big32(reply, 24);
        require(status == kDone || status == kStalled || status == kGone,
                "with a status of a transfer");
        require(moved <= length, "no more moves than there is room for");
        require(reply.size() == kUrb + (in ? moved : 0), "and all that moves is there");
    }

    /// A transfer on the default pipe, once the device has left.
    void requireNothingMore()
    {
        ByteBuffer late;
        for (const std::uint32_t word : {1U, 77U, m_device, 1U, 0U, 0U, 18U, 0U, 0U, 0U}) {
            putBig32(late, word);
        }
        late.insert(late.end(), {0x80, 6, 0, 1, 0, 0, 18, 0});
        ByteBuffer out;
        std::size_t taken = 0;
        require(m_server.step(late, taken, out) == Step::Answered && taken == kUrb,
                "it is dealt with");
        require(out.size() == kUrb && big32(out, 4) == 77 && big32(out, 20) == kGone,
                "a device that has left answers nothing any more");
    }

    OfferedHub m_hub;
    ServerConversation m_server;
    ByteBuffer m_in;
    ByteBuffer m_out;
    std::vector<std::uint32_t> m_pending;
    std::uint32_t m_device = 0;
    bool m_imported = false;
    bool m_ended = false;
};

} // namespace

} // namespace vornadel::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vornadel;
    using namespace vornadel::test;
    FuzzInput input(data, size);
    const HubCode code = (input.byte() & 1) != 0 ? HubCode::Rom : HubCode::Flash;
    const std::size_t atATime = input.byte() + std::size_t{1};
    const ByteView bytes = input.rest();

    Connection whole(code);
    whole.arrives(bytes);
    Connection torn(code);
    for (std::size_t at = 0; at < bytes.size(); at += atATime) {
        torn.arrives(bytes.subspan(at, std::min(atATime, bytes.size() - at)));
    }
    require(torn.out() == whole.out() && torn.ended() == whole.ended(),
            "it does not matter how bytes arrive");
    whole.leaves();
    torn.leaves();
    return 0;
}
