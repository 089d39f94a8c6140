#include "tests/flows/FlowTable.h"

#include "driver/HubDriver.h"
#include "firmware/FwImage.h"
#include "flows/FirmwareUpdate.h"
#include "flows/FlashErase.h"
#include "flows/FlashRead.h"
#include "standins/sim/DemoImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string_view>

namespace vornadel::test
{

namespace
{

using namespace std::chrono_literals;

bool runUpdate(SimulatedHub& /*hub*/, FlowReporter& reporter)
{
    const std::vector<std::uint8_t>& bytes = newFlash();
    FwImage image;
    EXPECT_TRUE(FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size())));
    return updateFirmware(image, "demo.bin", reporter);
}

bool runRead(SimulatedHub& hub, FlowReporter& reporter)
{
    const std::vector<std::uint8_t> earlier{1, 2, 3};
    std::vector<std::uint8_t> bytes = earlier;
    const bool succeeded = readFlash(bytes, reporter);
    if (!succeeded) {
        EXPECT_EQ(bytes, earlier);
    } else if (bytes != hub.flash()) {
        EXPECT_EQ(bytes.size(), hub.flash().size());
        EXPECT_GT(hub.faultsTriggered(), 0U);
    }
    return succeeded;
}

bool runErase(SimulatedHub& /*hub*/, FlowReporter& reporter) { return eraseFlash(reporter); }

/// It reports nothing; only the code that the hub runs is visible.
bool runUnload(SimulatedHub& hub, FlowReporter& /*reporter*/)
{
    returnHubToFlash();
    return hub.runningCode() == HubCode::Flash;
}

Cause causeOf(Step failed)
{
    switch (failed) {
    case Step::Open:
        return Cause::NotOpened;
    case Step::Verify:
        return Cause::Different;
    case Step::Restart:
        return Cause::NotRestarted;
    default:
        return Cause::RequestFailed;
    }
}

} // namespace

const std::vector<std::uint8_t>& newFlash()
{
    static const std::vector<std::uint8_t> bytes = demoImage(kDemoVersion101);
    return bytes;
}

const std::vector<std::uint8_t>& oldFlash()
{
    static const std::vector<std::uint8_t> bytes = demoImage();
    return bytes;
}

FlowResult failureIn(const FlowResult& result)
{
    return {result.step,       result.cause,   result.address,
            result.wrongBytes, result.failure, result.owner};
}

std::string Flow::wireFrom(HubCode runs) const
{
    return (runs == HubCode::Flash ? "osvmOS" : "os") + std::string(work) + "fH";
}

bool Flow::writes() const { return std::string_view(work).find('w') != std::string_view::npos; }

const Flow& easyUpdate()
{
    static const Flow flow{
        "Update",
        runUpdate,
        "ewwwwwwwwrrrrrrrr",
        {Step::Open, Step::Erase, Step::Write, Step::Read, Step::Verify, Step::Restart},
        {{Step::Open,
          "Fail To Open Rom Device\nPlease Load Driver firstly\nThen replugin usb hub device\n"},
         {Step::Erase, "Fail to Erase Flash\n"},
         {Step::Write, "Fail to Write Flash\n"},
         {Step::Read, "Fail to Read Flash\n"},
         {Step::Verify, "Fail to verify flash\n"},
         {Step::Restart, "Fail to Reset to Flash Code\n"}},
        "Update FW Success\n",
        "Update FW Fail\n"};
    return flow;
}

const Flow& flashRead()
{
    static const Flow flow{
        "Read",
        runRead,
        "rrrrrrrr",
        {Step::Open, Step::Read, Step::Restart},
        {{Step::Open,
          "Fail to Open Rom Device\nPlease Load Driver firstly\nThen replugin usb hub device\n"},
         {Step::Read, "Fail to Read Flash\n"},
         {Step::Restart, "Fail to Reset to Flash Code\n"}},
        "Read Fw Success\n",
        "Read Fw Fail\n"};
    return flow;
}

const Flow& flashErase()
{
    static const Flow flow{"Erase",
                           runErase,
                           "e",
                           {Step::Open, Step::Erase, Step::Restart},
                           {{Step::Open, "Fail to Open Rom Device"},
                            {Step::Erase, "Fail to Erase flash"},
                            {Step::Restart, "Fail to Reset Flash & Wait"}},
                           "Erase FW Success\n",
                           "\nErase FW Fail\n"};
    return flow;
}

const Flow& driverUnload()
{
    static const Flow flow{"Unload", runUnload, "", {}, {}, "", ""};
    return flow;
}

std::string asObserved(std::string wire)
{
    for (char& request : wire) {
        if (std::string_view("oOH").find(request) != std::string_view::npos) {
            request = 'h';
        } else if (std::string_view("svS").find(request) != std::string_view::npos) {
            request = 's';
        }
    }
    return wire;
}

char observedLetter(const ControlRequest& request)
{
    switch (request.bRequest) {
    case 0x02:
        return 'h';
    case 0x09:
        return 's';
    case 0x00:
        return 'm';
    case 0xE9:
        return 'f';
    case 0xE8:
        return 'e';
    case 0xC8:
        return 'w';
    case 0xD8:
        return 'r';
    default:
        return '?';
    }
}

void expectTold(const Flow& flow, const ToldValues& told, bool succeeded, std::optional<Step> fails)
{
    EXPECT_EQ(told.starts, flow.steps.empty() ? 0 : 1);
    EXPECT_EQ(told.ends, flow.steps.empty() ? 0 : 1);
    if (flow.steps.empty()) {
        return;
    }
    EXPECT_EQ(told.result.succeeded(), succeeded);
    ASSERT_FALSE(told.steps.empty());
    const Step last = succeeded ? flow.steps.back() : fails.value_or(told.steps.back());
    const auto end = std::find(flow.steps.begin(), flow.steps.end(), last);
    EXPECT_EQ(told.steps, std::vector<Step>(flow.steps.begin(), end + 1));
    EXPECT_EQ(told.result.step, last);
    if (!succeeded) {
        EXPECT_EQ(told.result.cause, causeOf(last));
    }
}

Clock::Duration longestFor(const std::string& observed)
{
    // After every erase request, and after every failed restart request.
    constexpr Clock::Duration kPause = 128ms;
    Clock::Duration longest = 3 * kPause; // attempts that no longer reach the hub
    for (const char request : observed) {
        if (request == 'm' || request == 'f') {
            longest += 20 * 2s;
        } else if (request == 'e') {
            longest += kPause;
        }
    }
    return longest;
}

SimulatedHubOptions hubThatRuns(HubCode code, const std::vector<std::uint8_t>& flash)
{
    SimulatedHubOptions options;
    options.mode = code;
    options.initialFlash = flash;
    return options;
}

FaultyRun::FaultyRun(const Flow& flow, SimulatedSetup& setup)
{
    setup.hub().onRequest = [&](const ControlRequest& request) {
        if (wire.empty() && !flow.steps.empty()) {
            EXPECT_EQ(told.steps, std::vector<Step>{Step::Open});
        }
        wire += observedLetter(request);
    };
    const Clock::Duration begun = setup.clock.now();
    succeeded = flow.run(setup.hub(), told);
    setup.hub().onRequest = nullptr;
    EXPECT_LE(setup.clock.now() - begun, longestFor(wire));
    EXPECT_FALSE(Hub_IsOpen());
    if (succeeded && !flow.steps.empty()) {
        EXPECT_TRUE(wire.ends_with("fh")) << wire << ": the restarted hub was not seen";
    }
    if (succeeded && flow.writes()) {
        EXPECT_TRUE(setup.hub().flash() == newFlash()) << "success was told";
    }
}

void powerUp(SimulatedSetup& setup, unsigned opensStillRefused)
{
    setup.hub().replug();
    setup.clock.advance(60s); // late returns and bounces are over
    for (unsigned refused = 0; refused < opensStillRefused && !Hub_OpenDevice(); ++refused) {
    }
    Hub_CloseDevice();
}

void expectHealthyUpdate(SimulatedSetup& setup, unsigned opensStillRefused)
{
    powerUp(setup, opensStillRefused);
    const FaultyRun run(easyUpdate(), setup);
    EXPECT_TRUE(run.succeeded);
    expectTold(easyUpdate(), run.told, true);
    EXPECT_TRUE(setup.hub().flash() == newFlash());
    EXPECT_EQ(setup.hub().runningCode(), HubCode::Flash);
}

} // namespace vornadel::test
