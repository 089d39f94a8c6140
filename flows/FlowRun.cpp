#include "flows/FlowRun.h"

#include "hub/FlashGeometry.h"
#include "hub/HubCommands.h"
#include "hub/HubTransport.h"

#include <algorithm>
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

} // namespace

FlowRun::FlowRun(const FlowStart& start, FlowReporter& reporter, const FlowOptions& options)
    : m_reporter(reporter), m_stop(options.stop), m_session(options.hub)
{
    m_reporter.started(start);
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

bool FlowRun::erase()
{
    m_reporter.stepStarted(Step::Erase);
    m_stop = nullptr; // from here on only the end leaves the hub with working firmware
    return Hub_EraseFlash() || failByHub(Step::Erase, Cause::RequestFailed);
}

bool FlowRun::write(std::span<const std::uint8_t> bytes)
{
    return transferAll(Step::Write, bytes, Hub_WriteFlash);
}

bool FlowRun::read(std::span<std::uint8_t> bytes)
{
    return transferAll(Step::Read, bytes, Hub_ReadFlash);
}

bool FlowRun::verify(std::span<const std::uint8_t> written, std::span<const std::uint8_t> readBack)
{
    m_reporter.stepStarted(Step::Verify);
    return check(difference(Step::Verify, Cause::Different, written, readBack));
}

bool FlowRun::restart()
{
    m_reporter.stepStarted(Step::Restart);
    return Hub_SwitchMode(HUB_MODE_FLASH) || failByHub(Step::Restart, Cause::NotRestarted);
}

bool FlowRun::readAgain(std::span<const std::uint8_t> bytes)
{
    std::vector<std::uint8_t> again(bytes.size());
    return !isStrict() || (readSilently(Step::Read, again) &&
                           check(difference(Step::Read, Cause::Unstable, bytes, again)));
}

bool FlowRun::eraseIsDone()
{
    const std::vector<std::uint8_t> blank(kFlashSize, kFlashBlank);
    std::vector<std::uint8_t> flash(kFlashSize);
    return !isStrict() || (readSilently(Step::Erase, flash) &&
                           check(difference(Step::Erase, Cause::NotErased, blank, flash)));
}

bool FlowRun::runs(const FwImage& image)
{
    if (!isStrict() || !image.loaded || image.version == nullptr) {
        return true;
    }
    HubStatusBlock block{};
    FlowResult result{.step = Step::Restart, .cause = Cause::NotConfirmed};
    if (Hub_ReadStatusBlock(block) != 0) {
        result.failure = Hub_LastFailure();
    } else if (romCodeRunsBy(block)) {
        result.failure = HubFailure::NoFlashCode;
    } else if (firmwareVersionIn(block) != (image.version[0] << 8 | image.version[1])) {
        result.failure = HubFailure::OtherVersion;
    } else {
        result.cause = Cause::None;
    }
    return check(result);
}

bool FlowRun::fail(const FlowResult& result)
{
    m_result = result;
    return false;
}

bool FlowRun::end()
{
    m_reporter.finished(m_result);
    Hub_CloseDevice();
    m_session.end(); // the next flow may begin as soon as this one has said that it is over
    m_reporter.closed();
    return m_result.succeeded();
}

template <typename Byte, typename Transfer>
bool FlowRun::transferAll(Step step, std::span<Byte> bytes, Transfer transfer)
{
    m_reporter.stepStarted(step);
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
        m_reporter.progressed(static_cast<std::int32_t>(done),
                              static_cast<std::int32_t>(bytes.size()));
    }
    return true;
}

/// Reads the flash from address 0 on, as part of a step that has begun.
bool FlowRun::readSilently(Step step, std::span<std::uint8_t> bytes)
{
    for (std::size_t done = 0; done < bytes.size(); done += kFlashPiece) {
        if (isAskedToStop()) {
            return stop(step);
        }
        const std::size_t length = std::min<std::size_t>(kFlashPiece, bytes.size() - done);
        const auto address = static_cast<std::uint32_t>(done);
        if (Hub_ReadFlash(address, bytes.subspan(done, length)) != 0) {
            return failByHub(step, Cause::RequestFailed, address);
        }
    }
    return true;
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
    const bool isBack = !m_session.hasRestarted() || Hub_SwitchMode(HUB_MODE_FLASH);
    return fail({.step = step,
                 .cause = Cause::Interrupted,
                 .failure = isBack ? HubFailure::None : Hub_LastFailure()});
}

} // namespace vornadel
