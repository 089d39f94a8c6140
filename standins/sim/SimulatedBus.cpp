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
    SimulatedDevice(std::shared_ptr<SimulatedHub> hub, AttachedHalf half)
        : m_hub(std::move(hub)), m_half(std::move(half))
    {
    }
    ~SimulatedDevice() override { giveBack(); }

    std::uint16_t vendorId() const override { return m_half.vendorId; }
    std::uint16_t productId() const override { return m_half.productId; }

    UsbPlace place() const override { return {{m_half.place, m_half.session}, {}}; }
    UsbTexts texts() const override { return {m_half.texts.product, m_half.texts.serialNumber}; }
    std::string containerId() override { return m_half.texts.containerId; }
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
    explicit SimulatedSearch(const std::vector<std::shared_ptr<SimulatedHub>>& hubs)
    {
        for (const std::shared_ptr<SimulatedHub>& hub : hubs) {
            for (AttachedHalf& half : hub->attachedHalves()) {
                m_found.emplace_back(hub, std::move(half));
            }
        }
    }

    Step next(std::unique_ptr<UsbDevice>& device) override
    {
        device.reset();
        if (m_next == m_found.size()) {
            return Step::End;
        }
        const auto& [hub, half] = m_found[m_next++];
        device = std::make_unique<SimulatedDevice>(hub, half);
        return Step::Device;
    }

    void release() override { m_next = m_found.size(); }

private:
    std::vector<std::pair<std::shared_ptr<SimulatedHub>, AttachedHalf>> m_found;
    std::size_t m_next = 0;
};

} // namespace

SimulatedBus::SimulatedBus(std::shared_ptr<Notifier> notifier,
                           std::vector<std::shared_ptr<SimulatedHub>> hubs)
    : m_notifier(std::move(notifier)), m_hubs(std::move(hubs)), m_locks(m_hubs)
{
}

// Not by unwatch(): a destructor calls no virtual function.
SimulatedBus::~SimulatedBus() { m_notifier->unwatch(); }

std::unique_ptr<SimulatedBus> SimulatedBus::create(std::string_view options, Clock& clock,
                                                   std::string& error)
{
    std::vector<SimulatedHubOptions> hubs;
    return parseSimulatedHubs(options, hubs, error) ? create(hubs, clock, error) : nullptr;
}

std::unique_ptr<SimulatedBus> SimulatedBus::create(const SimulatedHubOptions& options, Clock& clock,
                                                   std::string& error)
{
    return create(std::vector{options}, clock, error);
}

std::unique_ptr<SimulatedBus> SimulatedBus::create(const std::vector<SimulatedHubOptions>& options,
                                                   Clock& clock, std::string& error)
{
    const auto connectors = std::make_shared<Connectors>();
    auto notifier = std::make_shared<Notifier>();
    std::vector<std::shared_ptr<SimulatedHub>> hubs;
    for (SimulatedHubOptions one : options) {
        one.number = static_cast<unsigned>(hubs.size() + 1);
        hubs.push_back(SimulatedHub::create(one, clock, error, connectors, notifier));
        if (!hubs.back()) {
            return nullptr;
        }
    }
    return std::unique_ptr<SimulatedBus>(new SimulatedBus(std::move(notifier), std::move(hubs)));
}

std::unique_ptr<UsbSearch> SimulatedBus::search()
{
    return std::make_unique<SimulatedSearch>(m_hubs);
}

bool SimulatedBus::watch(Listener listener) { return m_notifier->watch(std::move(listener)); }

void SimulatedBus::unwatch() { m_notifier->unwatch(); }

Platform SimulatedBus::replaceBusOf(const Platform& machine)
{
    return {.usb = *this,
            .shell = machine.shell,
            .privileged = machine.privileged,
            .systemVersion = machine.systemVersion,
            .clock = machine.clock,
            .taskbar = machine.taskbar};
}

} // namespace vornadel
