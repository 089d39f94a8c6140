#include "flows/FirmwareUpdate.h"
#include "flows/FlashErase.h"
#include "flows/FlashRead.h"
#include "tests/flows/FlowTable.h"
#include "tests/support/SimulatedSetup.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>

#include <sys/wait.h>
#include <unistd.h>

namespace vornadel::test
{

namespace
{

using StrictRun = bool (*)(FlowReporter&);

bool updateStrictly(FlowReporter& reporter)
{
    const std::vector<std::uint8_t> bytes = demoImage(0x0101);
    FwImage image;
    FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size()));
    return updateFirmware(image, "demo.bin", reporter, {.hub = {.strict = true}});
}

bool readStrictly(FlowReporter& reporter)
{
    std::vector<std::uint8_t> flash;
    return readFlash(flash, reporter, {.hub = {.strict = true}});
}

bool eraseStrictly(FlowReporter& reporter)
{
    return eraseFlash(reporter, {.hub = {.strict = true}});
}

class KilledFlow : public testing::TestWithParam<StrictRun>
{
protected:
    KilledFlow() : m_folder(placeInMemory())
    {
        m_options.image = m_folder.path() + "/hub.bin";
        m_options.latency = SimulatedLatency::None;
    }

    bool runs(StrictRun flow, const std::function<void()>& atEachRequest = {})
    {
        HubSetup setup(m_options);
        setup.hub().onRequest = [&](const ControlRequest&) {
            if (atEachRequest) {
                atEachRequest();
            }
        };
        ToldValues told;
        return flow(told);
    }

    /// Whether a process that runs the flow was killed at this request. False: it had ended before.
    bool isKilledAt(int request)
    {
        const pid_t child = fork();
        if (child == 0) {
            const bool succeeded = runs(GetParam(), [&request] {
                if (--request == 0) {
                    static_cast<void>(kill(getpid(), SIGKILL));
                }
            });
            _exit(succeeded ? 0 : 1);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0);
        return WIFSIGNALED(status);
    }

private:
    TemporaryFolder m_folder;
    SimulatedHubOptions m_options;
};

} // namespace

TEST_P(KilledFlow, LeavesThePlaceFreeAndTheNextUpdateSucceeds)
{
    int request = 1;
    for (; isKilledAt(request); ++request) {
        EXPECT_TRUE(runs(updateStrictly)) << "after a kill at request " << request;
    }
    EXPECT_GT(request, 5);
}

INSTANTIATE_TEST_SUITE_P(EveryRequest, KilledFlow,
                         testing::Values(updateStrictly, readStrictly, eraseStrictly));

} // namespace vornadel::test
