#include "standins/sim/SimulatedBus.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace vornadel
{

namespace
{

class SimulatedDevice final : public UsbDevice
{
public:
    SimulatedDevice(std::shared_ptr<SimulatedHub> hub, const AttachedHalf& half)
        : m_hub(std::move(hub)), m_half(half)
    {
    }
    ~SimulatedDevice() override { giveBack(); }

    std::uint16_t vendorId() const override { return m_half.vendorId; }
    std::uint16_t productId() const override { return m_half.productId; }

    UsbPlace place() const override { return {{"sim-1", m_half.session}, {}}; }
    UsbTexts texts() const override { return {}; }
    std::string containerId() override { return {}; }
    std::vector<std::string> attachedBelow() const override { return {}; }

    UsbOpenStatus open() override
    {
        if (m_open) {
            return UsbOpenStatus::Busy;
        }
        const UsbOpenStatus status = m_hub->open(m_half);
        m_open = status == UsbOpenStatus::Opened;
        return status;
    }

    std::uint32_t control(ControlRequest& request) override
    {
        return m_open ? m_hub->control(m_half, request) : kSimulatedNotOpen;
    }

    UsbFailure failureOf(std::uint32_t status) const override
    {
        switch (status) {
        case kSimulatedStall:
            return UsbFailure::Stalled;
        case kSimulatedShort:
            return UsbFailure::Short;
        case kSimulatedNoDevice:
            return UsbFailure::Gone;
        default:
            return UsbFailure::Other;
        }
    }

    void close() override { giveBack(); }

private:
    void giveBack()
    {
        if (m_open) {
            m_hub->close(m_half);
            m_open = false;
        }
    }

    std::shared_ptr<SimulatedHub> m_hub;
    AttachedHalf m_half;
    bool m_open = false;
};

class SimulatedSearch final : public UsbSearch
{
public:
    explicit SimulatedSearch(std::shared_ptr<SimulatedHub> hub)
        : m_hub(std::move(hub)), m_found(m_hub->attachedHalves())
    {
    }

    Step next(std::unique_ptr<UsbDevice>& device) override
    {
        device.reset();
        if (m_next == m_found.size()) {
            return Step::End;
        }
        device = std::make_unique<SimulatedDevice>(m_hub, m_found[m_next++]);
        return Step::Device;
    }

    void release() override { m_next = m_found.size(); }

private:
    std::shared_ptr<SimulatedHub> m_hub;
    std::vector<AttachedHalf> m_found;
    std::size_t m_next = 0;
};

} // namespace

SimulatedBus::SimulatedBus(std::shared_ptr<SimulatedHub> hub) : m_hub(std::move(hub)) {}

std::unique_ptr<SimulatedBus> SimulatedBus::create(std::string_view options, Clock& clock,
                                                   std::string& error)
{
    SimulatedHubOptions read;
    return parseSimulatedHubOptions(options, read, error) ? create(read, clock, error) : nullptr;
}

// Not by unwatch(): a destructor calls no virtual function.
SimulatedBus::~SimulatedBus() { m_hub->notifier().unwatch(); }

std::unique_ptr<SimulatedBus> SimulatedBus::create(const SimulatedHubOptions& options, Clock& clock,
                                                   std::string& error)
{
    std::shared_ptr<SimulatedHub> hub = SimulatedHub::create(options, clock, error);
    return hub ? std::unique_ptr<SimulatedBus>(new SimulatedBus(std::move(hub))) : nullptr;
}

std::unique_ptr<UsbSearch> SimulatedBus::search()
{
    return std::make_unique<SimulatedSearch>(m_hub);
}

bool SimulatedBus::watch(Listener listener) { return m_hub->notifier().watch(std::move(listener)); }

void SimulatedBus::unwatch() { m_hub->notifier().unwatch(); }

Platform SimulatedBus::replaceBusOf(const Platform& machine)
{
    return {*this, machine.shell, machine.privileged, machine.systemVersion, machine.clock};
}

} // namespace vornadel
