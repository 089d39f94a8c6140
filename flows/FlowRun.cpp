#include "flows/FlowRun.h"

#include "hub/FlashGeometry.h"
#include "hub/HubCommands.h"
#include "hub/HubTransport.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace vornadel
{

namespace
{

/// `cause` with the first place where the two differ, and their number; null causes nothing.
FlowResult difference(Step step, Cause cause, std::span<const std::uint8_t> expected,
                      std::span<const std::uint8_t> actual)
{
    FlowResult result{.step = step, .cause = Cause::None};
    for (std::size_t i = expected.size(); i-- > 0;) {
        if (expected[i] != actual[i]) {
            result.cause = cause;
            result.address = static_cast<std::uint32_t>(i);
            ++result.wrongBytes;
        }
    }
    return result;
}

/// For the second of two reads: differs from the first in every byte, so that a hub which confirms
/// a read but delivers nothing fails the comparison.
std::vector<std::uint8_t> complementOf(std::span<const std::uint8_t> bytes)
{
    std::vector<std::uint8_t> complement(bytes.size());
    std::transform(bytes.begin(), bytes.end(), complement.begin(),
                   [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
    return complement;
}

/// Fills a status block before it is read. If it is still there afterwards, nothing was delivered.
constexpr std::uint8_t kNotDelivered = 0xA5;

} // namespace

/// How far a step has come before this transfer, and how far it has to go, in bytes. Without a
/// total the transfer reports nothing.
struct FlowRun::Progress {
    std::size_t before = 0;
    std::size_t total = 0;
};

FlowRun::FlowRun(const FlowStart& start, FlowReporter& reporter, const FlowOptions& options)
    : m_reporter(reporter), m_stop(options.stop), m_beforeChange(options.beforeChange),
      m_session(options.hub)
{
    m_session.onWaiting = [&reporter](Clock::Duration sofar) { reporter.waiting(sofar); };
    m_reporter.started(start);
}

FlowRun::~FlowRun() { Hub_CloseDevice(); }

bool FlowRun::open()
{
    m_reporter.stepStarted(Step::Open);
    return isAskedToStop() ? stop(Step::Open)
                           : Hub_OpenPatiently() || failByHub(Step::Open, Cause::NotOpened);
}

bool FlowRun::openRom()
{
    m_reporter.stepStarted(Step::Open);
    if (isAskedToStop()) {
        return stop(Step::Open);
    }
    if (!Hub_OpenRomDevice()) {
        return failByHub(Step::Open, Cause::NotOpened);
    }
    return !isAskedToStop() || stop(Step::Open);
}

bool FlowRun::save(std::span<const std::uint8_t> wanted, FlashState whenEqual)
{
    if (!isStrict() || !m_beforeChange) {
        return true;
    }
    m_reporter.stepStarted(Step::Save);
    std::vector<std::uint8_t> flash(kFlashSize);
    if (!readTwice(flash)) {
        sendBack();
        return false;
    }
    switch (m_beforeChange(flash)) {
    case BeforeChange::Go:
        return !isAskedToStop() || stop(Step::Save);
    case BeforeChange::UpToDate:
        m_isUpToDate = true;
        if (wanted.size() <= flash.size() &&
            std::equal(wanted.begin(), wanted.end(), flash.begin())) {
            m_flash = whenEqual;
        }
        return true;
    case BeforeChange::NotSaved:
        return fail({.step = Step::Save, .cause = Cause::NotSaved, .failure = sendBack()});
    case BeforeChange::Stop:
        break;
    }
    return stop(Step::Save);
}

bool FlowRun::erase()
{
    m_reporter.stepStarted(Step::Erase);
    m_stop = nullptr; // from here on only the end leaves the hub with working firmware
    if (!Hub_IsAbandoned()) {
        m_changed = true;
        m_flash = FlashState::Incomplete;
    }
    return Hub_EraseFlash() || failByHub(Step::Erase, Cause::RequestFailed);
}

bool FlowRun::write(std::span<const std::uint8_t> bytes)
{
    m_reporter.stepStarted(Step::Write);
    if (!transferAll(Step::Write, bytes, Hub_WriteFlash, {0, bytes.size()})) {
        return false;
    }
    m_flash = FlashState::Written;
    return true;
}

bool FlowRun::read(std::span<std::uint8_t> bytes)
{
    m_reporter.stepStarted(Step::Read);
    return transferAll(Step::Read, bytes, Hub_ReadFlash, {0, bytes.size()});
}

bool FlowRun::verify(std::span<const std::uint8_t> image, std::span<const std::uint8_t> readBack)
{
    m_reporter.stepStarted(Step::Verify);
    const FlowResult result = difference(Step::Verify, Cause::Different, image, readBack);
    if (result.succeeded()) {
        m_flash = FlashState::Verified;
    } else if (m_changed) {
        m_flash = FlashState::Incomplete;
    }
    return check(result);
}

bool FlowRun::restart()
{
    m_reporter.stepStarted(Step::Restart);
    return switchMode(HUB_MODE_FLASH) || failByHub(Step::Restart, Cause::NotRestarted);
}

bool FlowRun::restartIntoRom()
{
    m_reporter.stepStarted(Step::Restart);
    return (look() == HubFailure::None && m_hub == HubState::Rom) || switchMode(HUB_MODE_ROM) ||
           failByHub(Step::Restart, Cause::NotRestarted);
}

bool FlowRun::readAgain(std::span<const std::uint8_t> bytes)
{
    std::vector<std::uint8_t> again = complementOf(bytes);
    return !isStrict() || (transferAll(Step::Read, std::span(again), Hub_ReadFlash, {}) &&
                           check(difference(Step::Read, Cause::Unstable, bytes, again)));
}

bool FlowRun::eraseIsDone()
{
    if (!isStrict()) {
        return true;
    }
    const std::vector<std::uint8_t> blank(kFlashSize, kFlashBlank);
    std::vector<std::uint8_t> flash = complementOf(blank);
    if (!transferAll(Step::Erase, std::span(flash), Hub_ReadFlash, {}) ||
        !check(difference(Step::Erase, Cause::NotErased, blank, flash))) {
        return false;
    }
    m_flash = FlashState::Erased;
    return true;
}

bool FlowRun::runs(HubState code)
{
    if (!isStrict()) {
        return true;
    }
    FlowResult result{.step = Step::Restart, .cause = Cause::NotConfirmed, .failure = look()};
    if (result.failure == HubFailure::None) {
        if (m_hub == code) {
            return true;
        }
        result.failure = code == HubState::Flash ? HubFailure::NoFlashCode : HubFailure::NoRomCode;
    }
    return fail(result);
}

bool FlowRun::runs(const FwImage& image)
{
    if (!isStrict() || !image.loaded || image.version == nullptr) {
        return true;
    }
    return runs(HubState::Flash) && (m_version == (image.version[0] << 8 | image.version[1]) ||
                                     fail({.step = Step::Restart,
                                           .cause = Cause::NotConfirmed,
                                           .failure = HubFailure::OtherVersion}));
}

HubFailure FlowRun::sendBack()
{
    if (!m_session.hasRestarted() || std::exchange(m_isSentBack, true)) {
        return HubFailure::None;
    }
    return switchMode(HUB_MODE_FLASH) ? HubFailure::None : Hub_LastFailure();
}

bool FlowRun::fail(const FlowResult& result)
{
    m_result = result;
    return false;
}

bool FlowRun::end()
{
    if (isStrict()) {
        lookAtTheEnd();
    }
    m_result.changed = m_changed;
    m_result.flash = m_flash;
    m_result.hub = m_hub;
    m_result.version = m_version;
    m_result.serialNumber = m_session.serialNumber();
    m_reporter.finished(m_result);
    Hub_CloseDevice();
    m_session.end(); // the next flow may begin as soon as this one has said that it is over
    m_reporter.closed();
    return m_result.succeeded();
}

/// As part of a step that has begun: moves all bytes, from address 0 on.
template <typename Byte, typename Transfer>
bool FlowRun::transferAll(Step step, std::span<Byte> bytes, Transfer transfer, Progress progress)
{
    for (std::size_t done = 0; done < bytes.size();) {
        if (isAskedToStop()) {
            return stop(step);
        }
        const std::size_t length = std::min<std::size_t>(kFlashPiece, bytes.size() - done);
        const auto address = static_cast<std::uint32_t>(done);
        if (transfer(address, bytes.subspan(done, length)) != 0) {
            return failByHub(step, Cause::RequestFailed, address);
        }
        done += length;
        if (progress.total > 0) {
            m_reporter.progressed(static_cast<std::int32_t>(progress.before + done),
                                  static_cast<std::int32_t>(progress.total));
        }
    }
    return true;
}

bool FlowRun::readTwice(std::span<std::uint8_t> flash)
{
    const std::size_t total = 2 * flash.size();
    if (!transferAll(Step::Save, flash, Hub_ReadFlash, {0, total})) {
        return false;
    }
    std::vector<std::uint8_t> again = complementOf(flash);
    return transferAll(Step::Save, std::span(again), Hub_ReadFlash, {flash.size(), total}) &&
           check(difference(Step::Save, Cause::Unstable, flash, again));
}

/// Asks the open hub what it runs. Returns why that is not known.
HubFailure FlowRun::look()
{
    m_hub = HubState::Unknown;
    HubStatusBlock nothing;
    nothing.fill(kNotDelivered);
    HubStatusBlock block = nothing;
    if (Hub_ReadStatusBlock(block) != 0) {
        return Hub_LastFailure();
    }
    if (block == nothing) {
        return HubFailure::Short;
    }
    m_hub = romCodeRunsBy(block) ? HubState::Rom : HubState::Flash;
    m_version = firmwareVersionIn(block);
    return HubFailure::None;
}

/// Finds out what has become of the hub, unless that is known.
void FlowRun::lookAtTheEnd()
{
    if (!Hub_IsOpen() && !m_session.hasRestarted()) { // it never was open
        m_hub = m_result.failure == HubFailure::NoHub ? HubState::Absent : HubState::Unknown;
        return;
    }
    // A handle may be dead although the hub is back, after a loose contact.
    for (int attempt = 0; attempt < 2 && m_hub == HubState::Unknown && !Hub_IsAbandoned();
         ++attempt) {
        m_session.expectNoRestart();
        if (!Hub_IsOpen() && !Hub_OpenDevice()) {
            const HubFailure failure = Hub_LastFailure();
            const bool isAbsent = failure == HubFailure::NoHub || failure == HubFailure::AnotherHub;
            m_hub = isAbsent ? HubState::Absent : HubState::Unknown;
            return;
        }
        if (look() == HubFailure::Unplugged) {
            Hub_CloseDevice();
        }
    }
}

bool FlowRun::switchMode(std::uint8_t mode)
{
    m_hub = HubState::Unknown;
    m_version.reset();
    return Hub_SwitchMode(mode);
}

bool FlowRun::failByHub(Step step, Cause cause, std::uint32_t address)
{
    return fail({.step = step,
                 .cause = cause,
                 .address = address,
                 .failure = Hub_LastFailure(),
                 .owner = m_session.owner().processId});
}

bool FlowRun::check(const FlowResult& result) { return result.succeeded() || fail(result); }

bool FlowRun::isAskedToStop() const { return m_stop != nullptr && *m_stop; }

/// Ends the flow as asked. A hub that it restarted runs its firmware again afterwards.
bool FlowRun::stop(Step step)
{
    return fail({.step = step, .cause = Cause::Interrupted, .failure = sendBack()});
}

} // namespace vornadel
