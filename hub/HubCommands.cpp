#include "hub/HubCommands.h"

#include "base/LastError.h"
#include "hub/HubFailure.h"
#include "hub/HubSession.h"
#include "hub/HubTransport.h"
#include "hub/VendorRequests.h"

#include <algorithm>
#include <chrono>
#include <iterator>

namespace vornadel
{

namespace
{

using namespace std::chrono_literals;

constexpr int kNoRomCode = 12;

constexpr std::size_t kVersionHigh = 10;
constexpr std::size_t kVersionLow = 11;
constexpr std::size_t kRestartSpeed = 13;
constexpr std::size_t kFlags = 15;
constexpr std::uint8_t kNotRomCode = 0x02;
constexpr std::uint8_t kQuickRestart = 1;

constexpr int kAttempts = 3; // of a mode command and of an erase request
constexpr Clock::Duration kAttemptPause = 128ms;
constexpr int kReopenAttempts = 20;
constexpr Clock::Duration kReopenPause = 2s;
constexpr Clock::Duration kQuickReopenPause = 1s;
constexpr Clock::Duration kPatience = 1s; // with someone who looks at the hub

struct ModeCommand {
    std::uint8_t mode;
    VendorCommand command;
};
constexpr ModeCommand kModeCommands[] = {
    {HUB_MODE_ROM, VendorCommand::RestartIntoRom},
    {HUB_MODE_FLASH, VendorCommand::RestartIntoFlash},
    {0x00, VendorCommand::ModeZero},
};

ControlRequest flashRequest(VendorCommand command, std::uint32_t address)
{
    ControlRequest request = vendorRequest(command);
    request.wValue = static_cast<std::uint16_t>(address & 0xFFFF);
    request.wIndex = static_cast<std::uint16_t>(address >> 16);
    return request;
}

Clock::Duration reopenPause(std::uint8_t mode)
{
    HubStatusBlock block{};
    const bool quick = mode == HUB_MODE_ROM && Hub_ReadStatusBlock(block) == 0 &&
                       block[kRestartSpeed] == kQuickRestart;
    return quick ? kQuickReopenPause : kReopenPause;
}

// The first attempt closes the hub, so the others fail before they reach it and only pause.
bool sendModeCommandPatiently(std::uint8_t mode)
{
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (Hub_SendModeCommand(mode)) {
            return true;
        }
        Hub_Pause(kAttemptPause);
    }
    return false;
}

bool isStrict()
{
    const HubSession* const session = HubSession::ofThisThread();
    return session != nullptr && session->isStrict();
}

} // namespace

std::uint16_t firmwareVersionIn(const HubStatusBlock& block)
{
    return static_cast<std::uint16_t>(block[kVersionHigh] << 8 | block[kVersionLow]);
}

bool romCodeRunsBy(const HubStatusBlock& block) { return (block[kFlags] & kNotRomCode) == 0; }

std::uint32_t Hub_ReadStatusBlock(std::span<std::uint8_t> buffer)
{
    ControlRequest request = vendorRequest(VendorCommand::ReadStatus);
    request.in = buffer;
    return Hub_ControlRequest(request);
}

bool Hub_IsRomMode()
{
    HubStatusBlock block{};
    return Hub_ReadStatusBlock(block) == 0 && romCodeRunsBy(block);
}

std::uint16_t Hub_GetFwVersion()
{
    HubStatusBlock block{};
    return Hub_ReadStatusBlock(block) == 0 ? firmwareVersionIn(block) : std::uint16_t{0};
}

bool Hub_SendModeCommand(std::uint8_t mode)
{
    const auto* const row =
        std::find_if(std::begin(kModeCommands), std::end(kModeCommands),
                     [mode](const ModeCommand& each) { return each.mode == mode; });
    const bool sent =
        row == std::end(kModeCommands) || Hub_ControlRequest(vendorRequest(row->command)) == 0;
    Hub_CloseDevice();
    return sent;
}

bool Hub_SwitchMode(std::uint8_t mode)
{
    const Clock::Duration pause = reopenPause(mode);
    Hub_BeginRestart();
    if (!sendModeCommandPatiently(mode)) {
        return false;
    }
    if (isStrict()) {
        return Hub_AwaitDevice(kReopenAttempts * pause, true);
    }
    for (int attempt = 0; attempt < kReopenAttempts; ++attempt) {
        Hub_Pause(pause);
        if (Hub_OpenDevice()) {
            return true;
        }
    }
    return false;
}

bool Hub_OpenPatiently()
{
    // In a strict session the place is locked, so who has the hub open only looks at it.
    return isStrict() ? Hub_AwaitDevice(kPatience, false) : Hub_OpenDevice();
}

bool Hub_OpenRomDevice()
{
    if (!Hub_OpenPatiently()) {
        return false;
    }
    if (Hub_IsRomMode()) {
        return true;
    }
    if (!Hub_SwitchMode(HUB_MODE_ROM)) {
        return false;
    }
    HubStatusBlock block{};
    const bool isAnswered = Hub_ReadStatusBlock(block) == 0;
    if (isAnswered && romCodeRunsBy(block)) {
        return true;
    }
    LastError = kNoRomCode;
    if (isAnswered) { // otherwise the failure of the request is the cause
        setLastFailure(HubFailure::NoRomCode);
    }
    Hub_CloseDevice();
    return false;
}

bool Hub_EraseFlash()
{
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const bool erased = Hub_ControlRequest(vendorRequest(VendorCommand::EraseFlash)) == 0;
        Hub_Pause(kAttemptPause);
        if (erased) {
            return true;
        }
    }
    return false;
}

std::uint32_t Hub_WriteFlash(std::uint32_t address, std::span<const std::uint8_t> data)
{
    ControlRequest request = flashRequest(VendorCommand::WriteFlash, address);
    request.out = data;
    return Hub_ControlRequest(request);
}

std::uint32_t Hub_ReadFlash(std::uint32_t address, std::span<std::uint8_t> buffer)
{
    ControlRequest request = flashRequest(VendorCommand::ReadFlash, address);
    request.in = buffer;
    return Hub_ControlRequest(request);
}

} // namespace vornadel
