#include "flows/FlowRun.h"

#include "hub/FlashGeometry.h"
#include "hub/HubCommands.h"
#include "hub/HubTransport.h"

#include <algorithm>

namespace vornadel
{

FlowRun::FlowRun(const FlowStart& start, FlowReporter& reporter) : m_reporter(reporter)
{
    m_reporter.started(start);
}

bool FlowRun::openRom()
{
    m_reporter.stepStarted(Step::Open);
    return Hub_OpenRomDevice() || fail(Step::Open, Cause::NotOpened);
}

bool FlowRun::erase()
{
    m_reporter.stepStarted(Step::Erase);
    return Hub_EraseFlash() || fail(Step::Erase, Cause::RequestFailed);
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
    const auto different = std::mismatch(written.begin(), written.end(), readBack.begin()).first;
    return different == written.end() ||
           fail(Step::Verify, Cause::Different,
                static_cast<std::uint32_t>(different - written.begin()));
}

bool FlowRun::restart()
{
    m_reporter.stepStarted(Step::Restart);
    return Hub_SwitchMode(HUB_MODE_FLASH) || fail(Step::Restart, Cause::NotRestarted);
}

bool FlowRun::fail(Step step, Cause cause, std::uint32_t address)
{
    m_result = {step, cause, address};
    return false;
}

bool FlowRun::end()
{
    m_reporter.finished(m_result);
    Hub_CloseDevice();
    m_reporter.closed();
    return m_result.succeeded();
}

template <typename Byte, typename Transfer>
bool FlowRun::transferAll(Step step, std::span<Byte> bytes, Transfer transfer)
{
    m_reporter.stepStarted(step);
    for (std::size_t done = 0; done < bytes.size();) {
        const std::size_t length = std::min<std::size_t>(kFlashPiece, bytes.size() - done);
        const auto address = static_cast<std::uint32_t>(done);
        if (transfer(address, bytes.subspan(done, length)) != 0) {
            return fail(step, Cause::RequestFailed, address);
        }
        done += length;
        m_reporter.progressed(static_cast<std::int32_t>(done),
                              static_cast<std::int32_t>(bytes.size()));
    }
    return true;
}

} // namespace vornadel
