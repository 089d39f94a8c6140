#include "standins/sim/SimulatedHub.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace vornadel
{

namespace
{

constexpr Clock::Duration kEraseTime = std::chrono::milliseconds(150);
constexpr Clock::Duration kProgramTime = std::chrono::microseconds(700); // per started 256 bytes
constexpr std::size_t kProgramUnit = 256;

constexpr std::uint8_t kVendorOut = 0x40;
constexpr std::uint8_t kVendorIn = 0xC0;
constexpr int kAny = -1;

std::uint32_t addressOf(const ControlRequest& request)
{
    return (static_cast<std::uint32_t>(request.wIndex) << 16) | request.wValue;
}

void flipBit(std::span<std::uint8_t> data, std::size_t offset, std::uint8_t bit)
{
    if (!data.empty()) {
        data[std::min(offset, data.size() - 1)] ^= bit;
    }
}

} // namespace

/// One request that the hub knows.
struct SimulatedHub::RequestRow {
    RequestKind kind;
    std::uint8_t bmRequestType;
    std::uint8_t bRequest;
    int wValue; // or kAny
    int wIndex;
    int wLength;
    bool romOnly; // refused while flash code runs
    Outcome (SimulatedHub::*perform)(ControlRequest&, const RequestEffects&);
};

const SimulatedHub::RequestRow* SimulatedHub::findRow(const ControlRequest& request)
{
    static constexpr std::array<RequestRow, 8> kRows = {{
        {RequestKind::OpenTime, kVendorOut, 0x02, 0x0001, kAny, 0, false,
         &SimulatedHub::acknowledge},
        {RequestKind::Status, kVendorIn, 0x09, 0, 0, kAny, false, &SimulatedHub::readStatus},
        {RequestKind::Rom, kVendorOut, 0x00, 0, 0, 0, false, &SimulatedHub::restartIntoRom},
        {RequestKind::Mode00, kVendorOut, 0x01, 0, 0, 0, false, &SimulatedHub::acknowledge},
        {RequestKind::Flash, kVendorOut, 0xE9, 0x0101, 0, 0, false,
         &SimulatedHub::restartIntoFlash},
        {RequestKind::Erase, kVendorOut, 0xE8, 0, 0, 0, true, &SimulatedHub::eraseFlash},
        {RequestKind::Write, kVendorOut, 0xC8, kAny, kAny, kAny, true, &SimulatedHub::writeFlash},
        {RequestKind::Read, kVendorIn, 0xD8, kAny, kAny, kAny, true, &SimulatedHub::readFlash},
    }};
    const auto matches = [](int wanted, int given) { return wanted == kAny || wanted == given; };
    const auto* row = std::find_if(kRows.begin(), kRows.end(), [&](const RequestRow& candidate) {
        return candidate.bmRequestType == request.bmRequestType &&
               candidate.bRequest == request.bRequest &&
               matches(candidate.wValue, request.wValue) &&
               matches(candidate.wIndex, request.wIndex) &&
               matches(candidate.wLength, request.wLength());
    });
    return row == kRows.end() ? nullptr : row;
}

bool SimulatedHub::accepts(const RequestRow* row) const
{
    return row != nullptr && !(row->romOnly && m_code == HubCode::Flash);
}

std::uint32_t SimulatedHub::control(const AttachedHalf& device, ControlRequest& request)
{
    request.transferred = 0;
    const RequestRow* const row = findRow(request);
    RequestEffects effects;
    bool works = false;
    {
        const std::lock_guard lock(m_mutex);
        if (!isOpen(device)) {
            return kSimulatedNoDevice;
        }
        effects = m_faults.countRequest(row != nullptr ? row->kind : RequestKind::Unknown);
        works = accepts(row);
    }
    if (onRequest) {
        onRequest(request);
    }
    const bool idle = effects.vanishBefore || effects.stall || effects.ignore;
    const Clock::Duration effort =
        works && !idle ? effortOf(row->kind, request) : Clock::Duration(0);
    if (effort > Clock::Duration(0)) {
        m_clock.sleep(effort);
    }
    Outcome outcome;
    {
        const std::lock_guard lock(m_mutex);
        if (!isOpen(device)) { // it has left meanwhile
            return kSimulatedNoDevice;
        }
        outcome = perform(row, request, effects);
    }
    m_notifier->deliver();
    if (outcome.restart && !outcome.restart->effects.never) {
        const Restart restart = *outcome.restart;
        schedule(restart.effects.late.value_or(restartTime()),
                 [restart](SimulatedHub& hub) { hub.comeBack(restart); });
    }
    return outcome.status;
}

SimulatedHub::Outcome SimulatedHub::perform(const RequestRow* row, ControlRequest& request,
                                            const RequestEffects& effects)
{
    if (effects.vanishBefore) {
        leaveBus();
        return {kSimulatedNoDevice, {}};
    }
    Outcome outcome = {kSimulatedStall, {}};
    if (effects.stall) {
        // nothing moves
    } else if (effects.ignore) {
        request.transferred = request.wLength();
        outcome.status = 0;
    } else if (accepts(row)) {
        outcome = (this->*row->perform)(request, effects);
    }
    if (effects.vanishAfter) {
        leaveBus();
        return {kSimulatedNoDevice, {}};
    }
    return outcome;
}

SimulatedHub::Outcome SimulatedHub::acknowledge(ControlRequest& /*request*/,
                                                const RequestEffects& /*effects*/)
{
    return {};
}

SimulatedHub::Outcome SimulatedHub::readStatus(ControlRequest& request,
                                               const RequestEffects& /*effects*/)
{
    const std::optional<FlashIdentity> identity = findFlashIdentity(m_flash.bytes());
    const std::uint16_t version = identity ? identity->version : kSimulatedRomVersion;
    std::array<std::uint8_t, 32> block{};
    block[10] = static_cast<std::uint8_t>(version >> 8);
    block[11] = static_cast<std::uint8_t>(version & 0xFF);
    block[13] = m_restartSpeed;
    block[15] = m_code == HubCode::Flash ? 0x02 : 0x00;

    const std::size_t count = std::min<std::size_t>(request.wLength(), block.size());
    std::copy_n(block.begin(), count, request.in.begin());
    request.transferred = static_cast<std::uint32_t>(count);
    return {count == request.wLength() ? 0 : kSimulatedShort, {}};
}

SimulatedHub::Outcome SimulatedHub::restartIntoRom(ControlRequest& /*request*/,
                                                   const RequestEffects& /*effects*/)
{
    return restartInto(HubCode::Rom);
}

SimulatedHub::Outcome SimulatedHub::restartIntoFlash(ControlRequest& /*request*/,
                                                     const RequestEffects& /*effects*/)
{
    return restartInto(HubCode::Flash);
}

SimulatedHub::Outcome SimulatedHub::restartInto(HubCode code)
{
    const RestartEffects effects = m_faults.countRestart();
    if (effects.ignored) {
        return {};
    }
    leaveBus();
    return {0, Restart{m_session, effects.sameMode ? m_code : code, effects}};
}

SimulatedHub::Outcome SimulatedHub::eraseFlash(ControlRequest& /*request*/,
                                               const RequestEffects& /*effects*/)
{
    return {changeFlash([](NorFlash& flash) { flash.erase(); }) ? 0 : kSimulatedStall, {}};
}

SimulatedHub::Outcome SimulatedHub::writeFlash(ControlRequest& request,
                                               const RequestEffects& effects)
{
    const std::uint32_t address = addressOf(request);
    if (!NorFlash::covers(address, request.wLength())) {
        return {kSimulatedStall, {}};
    }
    std::vector<std::uint8_t> data(request.out.begin(), request.out.end());
    if (effects.flip) {
        flipBit(data, *effects.flip, 0x01);
    }
    if (effects.torn) {
        data.resize(std::min(data.size(), *effects.torn));
    }
    if (!changeFlash([&](NorFlash& flash) { flash.program(address, data); })) {
        return {kSimulatedStall, {}};
    }
    request.transferred = static_cast<std::uint32_t>(data.size());
    return {effects.torn ? kSimulatedShort : 0, {}};
}

SimulatedHub::Outcome SimulatedHub::readFlash(ControlRequest& request,
                                              const RequestEffects& effects)
{
    const std::uint32_t address = addressOf(request);
    if (!NorFlash::covers(address, request.wLength())) {
        return {kSimulatedStall, {}};
    }
    const std::span<const std::uint8_t> range = m_flash.read(address, request.wLength());
    std::copy(range.begin(), range.end(), request.in.begin());
    if (effects.flip) {
        flipBit(request.in, *effects.flip, 0x02);
    }
    request.transferred = request.wLength();
    return {};
}

Clock::Duration SimulatedHub::effortOf(RequestKind kind, const ControlRequest& request) const
{
    if (m_latency == SimulatedLatency::None) {
        return Clock::Duration(0);
    }
    if (kind == RequestKind::Erase) {
        return kEraseTime;
    }
    if (kind == RequestKind::Write) {
        return kProgramTime * ((request.wLength() + kProgramUnit - 1) / kProgramUnit);
    }
    return Clock::Duration(0);
}

} // namespace vornadel
