#pragma once

#include "platform/Clock.h"
#include "platform/UsbBus.h"
#include "standins/sim/Connectors.h"
#include "standins/sim/Fault.h"
#include "standins/sim/FlashFile.h"
#include "standins/sim/NorFlash.h"
#include "standins/sim/Notifier.h"
#include "standins/sim/SimulatedHubOptions.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace vornadel
{

// How a request to the simulated hub can fail.
inline constexpr std::uint32_t kSimulatedStall = 1;    ///< the hub refused the request
inline constexpr std::uint32_t kSimulatedNoDevice = 2; ///< the hub has left since it was opened
inline constexpr std::uint32_t kSimulatedShort = 3;    ///< fewer bytes moved than requested
inline constexpr std::uint32_t kSimulatedNotOpen = 4;  ///< the device is not open; nothing was sent

/// Version word in the status block while the flash holds no valid image.
inline constexpr std::uint16_t kSimulatedRomVersion = 0x0001;

/// The hub has two devices on the bus, one per speed.
enum class HubSpeed { SuperSpeed, HighSpeed };
inline constexpr std::size_t kHubSpeedCount = 2;

/// One of the hub's devices between one arrival on the bus and the next departure.
struct AttachedHalf {
    HubSpeed speed = HubSpeed::SuperSpeed;
    std::uint64_t session = 0; ///< Connectors::nextStay(): the same for both devices
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;
    std::uint16_t otherProductId = 0; ///< of the device at the other speed
    std::string place{};              ///< "sim-1": the connector, the same for both devices
    FlashTexts texts{};
};

/// A hub controller with its flash, as seen from the bus.
///
/// It runs the firmware in its flash ("flash code") or its built-in "ROM code"; without a valid
/// image in the flash it always starts ROM code. Status block (32 bytes): version of the image in
/// the flash at 10 and 11, high byte first (0x0001 without a valid image), restart speed at 13, bit
/// 1 of byte 15 set while flash code runs; all other bytes are 0. The hub refuses flash requests
/// while flash code runs, an erase at any address but 0, addresses beyond the flash, and every
/// request that is not in its table. A restart takes both devices off the bus. They come back
/// SuperSpeed first, with the ids of the image in the flash.
///
/// All members may be called from any thread. No lock is held while the clock, the listener or
/// onRequest is called.
class SimulatedHub : public std::enable_shared_from_this<SimulatedHub>
{
public:
    /// A hub attached to the bus. Null and a sentence in `error` if its flash file cannot be used.
    /// The clock must outlive the hub.
    static std::shared_ptr<SimulatedHub>
    create(const SimulatedHubOptions& options, Clock& clock, std::string& error,
           std::shared_ptr<Connectors> connectors = std::make_shared<Connectors>(),
           std::shared_ptr<Notifier> notifier = std::make_shared<Notifier>());

    /// Called before each request takes effect, on the requester's thread. Set it before the
    /// threads start.
    std::function<void(const ControlRequest&)> onRequest;

    void addFault(const Fault& fault);
    void unplug(); ///< takes the hub off the bus until replug(), even during a restart
    /// Powers an absent hub up again; HubCode::Rom is like holding its boot button. No effect while
    /// it is attached.
    void replug(HubCode code = HubCode::Flash);

    std::vector<std::uint8_t> flash() const; ///< a copy
    /// Reprograms the flash directly; the controller reads its ids when it next starts. False, with
    /// the flash unchanged, if the size is wrong or the file cannot be written.
    bool setFlash(std::vector<std::uint8_t> bytes);

    HubCode runningCode() const;
    unsigned requestCount() const;    ///< requests that reached the hub since its creation
    unsigned faultsTriggered() const; ///< faults that have happened
    std::string place() const;        ///< also while it is off the bus

    // For the bus:
    std::vector<AttachedHalf> attachedHalves() const; ///< in the order of enumeration
    /// Exclusive, here and across programs that share the file.
    UsbOpenStatus open(const AttachedHalf& device);
    void close(const AttachedHalf& device); ///< call only for a device you opened
    std::uint32_t control(const AttachedHalf& device, ControlRequest& request);
    Notifier& notifier() { return *m_notifier; }

    /// Keeps the hub from programs that share its flash file until giveBack(), also while it
    /// restarts, and from another reserve(). On failure false, and in `owner` the process that has
    /// it, as FlashFile::owner() tells it.
    bool reserve(std::int64_t& owner);
    void giveBack();
    /// The process that has reserved the hub, or has it open in another program; 0: nobody.
    std::int64_t owner() const;

private:
    struct RequestRow;
    struct Half {
        bool attached = false;
        bool opened = false;
    };
    struct Restart { // a restart that is under way
        std::uint64_t session = 0;
        HubCode code = HubCode::Flash;
        RestartEffects effects;
    };
    struct Outcome {
        std::uint32_t status = 0;
        std::optional<Restart> restart;
    };

    SimulatedHub(const SimulatedHubOptions& options, Clock& clock,
                 std::shared_ptr<Connectors> connectors, std::shared_ptr<Notifier> notifier);

    static const RequestRow* findRow(const ControlRequest& request);

    // With m_mutex held:
    bool isOpen(const AttachedHalf& device) const;
    bool accepts(const RequestRow* row) const;
    bool isAttached() const;
    bool isInUse() const;
    UsbOpenStatus takeFile();
    void leaveFile();
    void leaveBus();
    void startCode(HubCode code);
    bool changeFlash(const std::function<void(NorFlash&)>& change);
    Outcome perform(const RequestRow* row, ControlRequest& request, const RequestEffects& effects);
    Outcome acknowledge(ControlRequest& request, const RequestEffects& effects);
    Outcome readStatus(ControlRequest& request, const RequestEffects& effects);
    Outcome restartIntoRom(ControlRequest& request, const RequestEffects& effects);
    Outcome restartIntoFlash(ControlRequest& request, const RequestEffects& effects);
    Outcome eraseFlash(ControlRequest& request, const RequestEffects& effects);
    Outcome writeFlash(ControlRequest& request, const RequestEffects& effects);
    Outcome readFlash(ControlRequest& request, const RequestEffects& effects);
    Outcome restartInto(HubCode code);

    // Without:
    Clock::Duration effortOf(RequestKind kind, const ControlRequest& request) const;
    Clock::Duration restartTime() const;
    void schedule(Clock::Duration delay, std::function<void(SimulatedHub&)> task);
    void comeBack(const Restart& restart);
    void tradePlaces(SimulatedHub& other);
    void attach(std::uint64_t session);
    void endRefusing(std::uint64_t session);
    void bounce(const Restart& restart);

    Clock& m_clock;
    const SimulatedLatency m_latency;
    const std::uint8_t m_restartSpeed;
    const std::optional<SimulatedIds> m_fixedIds;
    const std::shared_ptr<Connectors> m_connectors;
    const std::shared_ptr<Notifier> m_notifier;

    mutable std::mutex m_mutex; // guards what follows
    NorFlash m_flash;
    std::unique_ptr<FlashFile> m_file; // null: the flash lives in memory only
    FaultList m_faults;
    HubCode m_code = HubCode::Flash;
    SimulatedIds m_ids;
    FlashTexts m_texts;
    std::string m_place;
    std::array<Half, kHubSpeedCount> m_halves{};
    std::uint64_t m_session;     // one per stay on the bus; older handles and returns are invalid
    unsigned m_reservations = 0; // one for each place of the hub that is locked
    std::string m_reservedPlace; // the last of them
    bool m_refusing = false;     // opens fail
};

} // namespace vornadel
