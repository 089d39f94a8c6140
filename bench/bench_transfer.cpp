// What the hub layer adds to a control transfer of 4096 bytes: reads of the flash through it,
// compared with the same reads in a plain libusb loop. The two alternate on the same hub, so that
// other load on the machine affects both alike.
//
// It needs a hub with ids 1209:0001 that runs its ROM code, and only reads the flash.
// tests/kernel/bench runs it in a virtual machine that has one. Elsewhere, start one with
//   sudo vornadel-virtual-hub --hub image=/tmp/hub.bin,mode=rom,latency=none

#include "bench/Table.h"
#include "hub/HubCommands.h"
#include "hub/HubTransport.h"
#include "hub/SupportedIds.h"
#include "platform/StdClock.h"
#include "platform/linux/LibusbBus.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <libusb.h>
#include <string>

namespace
{

using namespace vornadel;
using bench::Series;

constexpr double kTargetRatio = 1.05;
constexpr std::uint16_t kVendor = 0x1209;
constexpr std::uint16_t kSuperSpeedProduct = 0x0001;
constexpr std::uint16_t kPiece = 4096;
constexpr int kPairs = 5000;
constexpr int kPairsToWarmUp = 50;

using Piece = std::array<std::uint8_t, kPiece>;
using Microseconds = std::chrono::duration<double, std::micro>;

[[noreturn]] void giveUp(const std::string& why)
{
    std::fprintf(stderr, "bench_transfer: %s\n", why.c_str());
    std::exit(EXIT_FAILURE);
}

/// The hub through libusb alone, with its own context.
class BareHub
{
public:
    BareHub()
    {
        if (libusb_init(&m_context) != 0) {
            giveUp("libusb cannot be initialised");
        }
        m_handle = libusb_open_device_with_vid_pid(m_context, kVendor, kSuperSpeedProduct);
    }
    BareHub(const BareHub&) = delete;
    BareHub& operator=(const BareHub&) = delete;
    ~BareHub()
    {
        if (m_handle != nullptr) {
            libusb_close(m_handle);
        }
        libusb_exit(m_context);
    }

    bool isOpen() const { return m_handle != nullptr; }
    bool read(Piece& piece) const
    {
        return libusb_control_transfer(m_handle, 0xC0, 0xD8, 0, 0, piece.data(), kPiece, 30000) ==
               kPiece;
    }

private:
    libusb_context* m_context = nullptr;
    libusb_device_handle* m_handle = nullptr;
};

/// Times one transfer.
template <typename Read>
void timeOne(const Read& read, Piece& piece, Series& times)
{
    const auto begin = std::chrono::steady_clock::now();
    const bool done = read(piece);
    times.add(Microseconds(std::chrono::steady_clock::now() - begin).count());
    if (!done) {
        giveUp("a read of the flash failed");
    }
}

int measure(const BareHub& bare)
{
    const auto readBare = [&](Piece& piece) { return bare.read(piece); };
    const auto readByLayer = [](Piece& piece) { return Hub_ReadFlash(0, piece) == 0; };
    Piece bareBytes{};
    Piece layerBytes{};
    Series bareTimes;
    Series layerTimes;
    for (int pair = -kPairsToWarmUp; pair < kPairs; ++pair) {
        if (pair == 0) {
            bareTimes = {};
            layerTimes = {};
        }
        if (pair % 2 == 0) { // so that each comes first equally often
            timeOne(readBare, bareBytes, bareTimes);
            timeOne(readByLayer, layerBytes, layerTimes);
        } else {
            timeOne(readByLayer, layerBytes, layerTimes);
            timeOne(readBare, bareBytes, bareTimes);
        }
    }
    if (bareBytes != layerBytes) {
        giveUp("the two ways read different bytes");
    }
    bench::printTable(
        "Control transfers of 4096 bytes", "microseconds",
        {rowOf("a loop with libusb alone", bareTimes, 0), rowOf("the hub layer", layerTimes, 0)});
    const double ratio = layerTimes.median() / bareTimes.median();
    bench::printTable("The hub layer against the bare loop", "times",
                      {{"ratio of the medians", layerTimes.count(), kTargetRatio, ratio}});
    return ratio <= kTargetRatio ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main()
{
    const BareHub bare;
    if (!bare.isOpen()) {
        giveUp("not measured: no hub of 1209:0001 is attached, or it may not be opened");
    }
    StdClock clock;
    LibusbBus bus(clock);
    Hub_UsePlatform(bus, clock);
    SupportedIdList.at(0) = {1, kVendor, kSuperSpeedProduct, kSuperSpeedProduct};
    if (!Hub_OpenDevice()) {
        giveUp("the hub cannot be opened");
    }
    if (!Hub_IsRomMode()) {
        Hub_CloseDevice();
        giveUp("the hub does not run its ROM code");
    }
    const int status = measure(bare);
    Hub_CloseDevice();
    return status;
}
