#include "standins/sim/SimulatedHub.h"

#include "standins/sim/DemoImage.h"

#include <algorithm>
#include <unistd.h>
#include <utility>

namespace vornadel
{

namespace
{

constexpr Clock::Duration kRestartTime = std::chrono::milliseconds(700);
constexpr Clock::Duration kBounceStay = std::chrono::milliseconds(100);

std::size_t indexOf(HubSpeed speed) { return static_cast<std::size_t>(speed); }

} // namespace

SimulatedHub::SimulatedHub(const SimulatedHubOptions& options, Clock& clock,
                           std::shared_ptr<Connectors> connectors,
                           std::shared_ptr<Notifier> notifier)
    : m_clock(clock), m_latency(options.latency), m_restartSpeed(options.restartSpeed),
      m_fixedIds(options.ids), m_connectors(std::move(connectors)), m_notifier(std::move(notifier)),
      m_place("sim-" + std::to_string(options.number)), m_session(m_connectors->nextStay())
{
    for (const Fault& fault : options.faults) {
        m_faults.add(fault);
    }
}

std::shared_ptr<SimulatedHub> SimulatedHub::create(const SimulatedHubOptions& options, Clock& clock,
                                                   std::string& error,
                                                   std::shared_ptr<Connectors> connectors,
                                                   std::shared_ptr<Notifier> notifier)
{
    std::vector<std::uint8_t> bytes = options.initialFlash.empty()
                                          ? demoImage(kDemoVersion100, options.number)
                                          : options.initialFlash;
    if (bytes.size() != kSimulatedFlashSize) {
        error = "the simulated flash has " + std::to_string(kSimulatedFlashSize) + " bytes, not " +
                std::to_string(bytes.size());
        return nullptr;
    }
    std::unique_ptr<FlashFile> file;
    if (!options.keepInMemory) {
        const std::string path = options.image.empty() ? defaultFlashFile() : options.image;
        if (path.empty()) {
            error =
                "no default folder for the simulated hub's flash; choose a file with image=FILE";
            return nullptr;
        }
        file = FlashFile::openOrCreate(path, bytes, error);
        if (!file || !file->load(bytes, error)) {
            return nullptr;
        }
    }
    std::shared_ptr<SimulatedHub> hub(
        new SimulatedHub(options, clock, std::move(connectors), std::move(notifier)));
    const std::lock_guard lock(hub->m_mutex);
    hub->m_flash.assign(std::move(bytes));
    hub->m_file = std::move(file);
    hub->startCode(options.mode);
    for (Half& half : hub->m_halves) {
        half.attached = true;
    }
    hub->m_connectors->add(hub);
    return hub;
}

void SimulatedHub::addFault(const Fault& fault)
{
    const std::lock_guard lock(m_mutex);
    m_faults.add(fault);
}

void SimulatedHub::unplug()
{
    {
        const std::lock_guard lock(m_mutex);
        leaveBus();
    }
    m_notifier->deliver();
}

void SimulatedHub::replug(HubCode code)
{
    std::uint64_t session = 0;
    {
        const std::lock_guard lock(m_mutex);
        if (isAttached()) {
            return;
        }
        session = m_session = m_connectors->nextStay();
        startCode(code);
    }
    attach(session);
}

std::vector<std::uint8_t> SimulatedHub::flash() const
{
    const std::lock_guard lock(m_mutex);
    return m_flash.bytes();
}

bool SimulatedHub::setFlash(std::vector<std::uint8_t> bytes)
{
    const std::lock_guard lock(m_mutex);
    return bytes.size() == kSimulatedFlashSize &&
           changeFlash([&](NorFlash& flash) { flash.assign(std::move(bytes)); });
}

HubCode SimulatedHub::runningCode() const
{
    const std::lock_guard lock(m_mutex);
    return m_code;
}

unsigned SimulatedHub::requestCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_faults.requests();
}

std::string SimulatedHub::place() const
{
    const std::lock_guard lock(m_mutex);
    return m_place;
}

unsigned SimulatedHub::faultsTriggered() const
{
    const std::lock_guard lock(m_mutex);
    return m_faults.triggered();
}

std::vector<AttachedHalf> SimulatedHub::attachedHalves() const
{
    const std::lock_guard lock(m_mutex);
    std::vector<AttachedHalf> attached;
    if (m_halves[indexOf(HubSpeed::SuperSpeed)].attached) {
        attached.push_back({HubSpeed::SuperSpeed, m_session, m_ids.vendorId, m_ids.superSpeedId,
                            m_ids.highSpeedId, m_place, m_texts});
    }
    if (m_halves[indexOf(HubSpeed::HighSpeed)].attached) {
        attached.push_back({HubSpeed::HighSpeed, m_session, m_ids.vendorId, m_ids.highSpeedId,
                            m_ids.superSpeedId, m_place, m_texts});
    }
    return attached;
}

UsbOpenStatus SimulatedHub::open(const AttachedHalf& device)
{
    const std::lock_guard lock(m_mutex);
    Half& half = m_halves[indexOf(device.speed)];
    if (device.session != m_session || !half.attached) {
        return UsbOpenStatus::Gone;
    }
    if (m_faults.countOpen() || m_refusing || half.opened) {
        return UsbOpenStatus::Busy;
    }
    const UsbOpenStatus status = takeFile();
    half.opened = status == UsbOpenStatus::Opened;
    return status;
}

void SimulatedHub::close(const AttachedHalf& device)
{
    const std::lock_guard lock(m_mutex);
    if (!isOpen(device)) {
        return;
    }
    m_halves[indexOf(device.speed)].opened = false;
    leaveFile();
}

bool SimulatedHub::reserve(std::int64_t& owner)
{
    const std::lock_guard lock(m_mutex);
    // Who has a hub's old place may lock the place that it has moved to as well.
    if (m_reservedPlace != m_place && takeFile() == UsbOpenStatus::Opened) {
        m_reservedPlace = m_place;
        ++m_reservations;
        return true;
    }
    owner = m_reservations > 0 || !m_file ? ::getpid() : m_file->owner();
    return false;
}

void SimulatedHub::giveBack()
{
    const std::lock_guard lock(m_mutex);
    if (--m_reservations == 0) {
        m_reservedPlace.clear();
    }
    leaveFile();
}

std::int64_t SimulatedHub::owner() const
{
    const std::lock_guard lock(m_mutex);
    if (m_reservations > 0) {
        return ::getpid();
    }
    return m_file && !m_file->locked() ? m_file->owner() : 0;
}

bool SimulatedHub::isAttached() const
{
    return std::any_of(m_halves.begin(), m_halves.end(),
                       [](const Half& half) { return half.attached; });
}

bool SimulatedHub::isInUse() const
{
    return m_reservations > 0 || std::any_of(m_halves.begin(), m_halves.end(),
                                             [](const Half& half) { return half.opened; });
}

/// Locks the flash file, which covers the whole hub, and reads it. Nothing to do if it is locked
/// already.
UsbOpenStatus SimulatedHub::takeFile()
{
    if (!m_file || m_file->locked()) {
        return UsbOpenStatus::Opened;
    }
    std::vector<std::uint8_t> bytes;
    std::string unread;
    if (!m_file->lock()) {
        return UsbOpenStatus::Busy;
    }
    if (!m_file->load(bytes, unread)) {
        m_file->unlock();
        return UsbOpenStatus::Other;
    }
    m_flash.assign(std::move(bytes)); // another program may have changed it meanwhile
    return UsbOpenStatus::Opened;
}

void SimulatedHub::leaveFile()
{
    if (m_file && !isInUse()) {
        m_file->unlock();
    }
}

bool SimulatedHub::isOpen(const AttachedHalf& device) const
{
    const Half& half = m_halves[indexOf(device.speed)];
    return device.session == m_session && half.attached && half.opened;
}

/// Takes both devices off at once: every handle becomes invalid, and a pending return is cancelled.
void SimulatedHub::leaveBus()
{
    m_session = m_connectors->nextStay();
    for (Half& half : m_halves) {
        if (half.attached) {
            m_notifier->push(UsbEvent::Detached);
        }
        half = Half();
    }
    m_refusing = false;
    leaveFile();
}

void SimulatedHub::startCode(HubCode code)
{
    const std::optional<FlashIdentity> identity = findFlashIdentity(m_flash.bytes());
    m_code = identity ? code : HubCode::Rom;
    m_texts = identity ? readFlashTexts(m_flash.bytes(), identity->block) : FlashTexts();
    if (m_fixedIds) {
        m_ids = *m_fixedIds;
    } else if (identity) {
        m_ids = {identity->vendorId, identity->superSpeedId, identity->highSpeedId};
    } else {
        m_ids = SimulatedIds();
    }
}

/// Changes the flash and its file together, or neither.
bool SimulatedHub::changeFlash(const std::function<void(NorFlash&)>& change)
{
    NorFlash changed = m_flash;
    change(changed);
    std::string unwritten;
    if (m_file && !m_file->store(changed.bytes(), unwritten)) {
        return false;
    }
    m_flash = std::move(changed);
    return true;
}

Clock::Duration SimulatedHub::restartTime() const
{
    return m_latency == SimulatedLatency::None ? Clock::Duration(0) : kRestartTime;
}

/// Runs the task after `delay`, at once if that is zero, and not at all once the hub is destroyed.
void SimulatedHub::schedule(Clock::Duration delay, std::function<void(SimulatedHub&)> task)
{
    if (delay <= Clock::Duration(0)) {
        task(*this);
        return;
    }
    m_clock.after(delay, [weak = weak_from_this(), task = std::move(task)] {
        if (const std::shared_ptr<SimulatedHub> hub = weak.lock()) {
            task(*hub);
        }
    });
}

void SimulatedHub::comeBack(const Restart& restart)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_session != restart.session) { // unplugged or plugged in again meanwhile
            return;
        }
        startCode(restart.code);
        if (restart.effects.moved) {
            m_place = m_connectors->unused();
        }
        m_refusing = restart.effects.refused > Clock::Duration(0);
    }
    if (restart.effects.swapped) {
        if (const std::shared_ptr<SimulatedHub> other = m_connectors->next(*this)) {
            tradePlaces(*other);
        }
    }
    attach(restart.session);
    if (restart.effects.refused > Clock::Duration(0)) {
        schedule(restart.effects.refused,
                 [restart](SimulatedHub& hub) { hub.endRefusing(restart.session); });
    }
    if (restart.effects.bounce) {
        schedule(kBounceStay, [restart](SimulatedHub& hub) { hub.bounce(restart); });
    }
}

/// Trades places with the other hub, which arrives at its new place if it was attached.
void SimulatedHub::tradePlaces(SimulatedHub& other)
{
    std::uint64_t arriving = 0;
    {
        const std::scoped_lock lock(m_mutex, other.m_mutex);
        std::swap(m_place, other.m_place);
        if (other.isAttached()) {
            other.leaveBus();
            arriving = other.m_session;
        }
    }
    other.m_notifier->deliver();
    if (arriving != 0) {
        other.attach(arriving);
    }
}

void SimulatedHub::endRefusing(std::uint64_t session)
{
    const std::lock_guard lock(m_mutex);
    if (m_session == session) {
        m_refusing = false;
    }
}

/// Puts the devices of one session on the bus, each with its own event.
void SimulatedHub::attach(std::uint64_t session)
{
    for (Half& half : m_halves) {
        {
            const std::lock_guard lock(m_mutex);
            if (m_session != session) { // it left again between the two
                return;
            }
            half.attached = true;
            m_notifier->push(UsbEvent::Attached);
        }
        m_notifier->deliver();
    }
}

/// A loose plug: leaves and returns once more, with the same code.
void SimulatedHub::bounce(const Restart& restart)
{
    Restart second = restart;
    second.effects = RestartEffects();
    {
        const std::lock_guard lock(m_mutex);
        if (m_session != restart.session) {
            return;
        }
        leaveBus();
        second.session = m_session;
    }
    m_notifier->deliver();
    schedule(restartTime(), [second](SimulatedHub& hub) { hub.comeBack(second); });
}

} // namespace vornadel
