#include "tests/flows/FlowTable.h"

#include "driver/HubDriver.h"
#include "firmware/FwImage.h"
#include "flows/FirmwareUpdate.h"
#include "flows/FlashErase.h"
#include "flows/FlashRead.h"
#include "flows/ScalarUpdate.h"
#include "standins/sim/DemoImage.h"

#include <gtest/gtest.h>

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

bool runScalar(SimulatedHub& /*hub*/, FlowReporter& reporter)
{
    FwImage image;
    return updateScalarImage(image, EXAMPLES, "demo-1.01.bin", "demo.bin", reporter);
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

/// It tells nothing; what the hub runs is all there is to see.
bool runUnload(SimulatedHub& hub, FlowReporter& /*reporter*/)
{
    returnHubToFlash();
    return hub.runningCode() == HubCode::Flash;
}

const std::string kDriverAdvice = "Please Load Driver firstly\nThen replugin usb hub device\n";

const std::vector<StepTexts> kUpdateSteps = {
    {Step::Open, "FW:demo.bin(size=32768)\n\n", "Fail To Open Rom Device\n" + kDriverAdvice},
    {Step::Erase, "Erase Flash...\n", "Fail to Erase Flash\n"},
    {Step::Write, "Write Flash...\n", "Fail to Write Flash\n"},
    {Step::Read, "Read Flash...\n", "Fail to Read Flash\n"},
    {Step::Verify, "Verify Flash...\n", "Fail to verify flash\n"},
    {Step::Reset, "Reset to Flash Code...\n", "Fail to Reset to Flash Code\n"},
};

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

std::string Flow::wireFrom(HubCode runs) const
{
    return (runs == HubCode::Flash ? "osvmOS" : "os") + std::string(work) + "fH";
}

const Flow& easyUpdate()
{
    static const Flow flow{"Update",
                           runUpdate,
                           "ewwwwwwwwrrrrrrrr",
                           true,
                           kUpdateSteps,
                           "Update FW Success\n",
                           "Update FW Fail\n"};
    return flow;
}

const Flow& scalarUpdate()
{
    static const Flow flow{"Scalar",
                           runScalar,
                           "ewwwwwwwwrrrrrrrr",
                           true,
                           kUpdateSteps,
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
        false,
        {{Step::Open, "Open Device...\n", "Fail to Open Rom Device\n" + kDriverAdvice},
         {Step::Read, "Reading Flash...\n", "Fail to Read Flash\n"},
         {Step::Reset, "Reset to Flash Code...\n", "Fail to Reset to Flash Code\n"}},
        "Read Fw Success\n",
        "Read Fw Fail\n"};
    return flow;
}

const Flow& flashErase()
{
    static const Flow flow{"Erase",
                           runErase,
                           "e",
                           false,
                           {{Step::Open, "Open Rom Device...\n", "Fail to Open Rom Device"},
                            {Step::Erase, "Erase Flash...\n", "Fail to Erase flash"},
                            {Step::Reset, "Reseting...\n", "Fail to Reset Flash & Wait"}},
                           "Erase FW Success\n",
                           "\nErase FW Fail\n"};
    return flow;
}

const Flow& driverUnload()
{
    static const Flow flow{"Unload", runUnload, "", false, {}, "", ""};
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

void expectTold(const Flow& flow, const RecordingReporter& reporter, bool succeeded,
                std::optional<Step> fails)
{
    using Kind = RecordingReporter::Kind;
    std::vector<std::string> blue;
    std::vector<std::string> red;
    const std::size_t told = reporter.texts(Kind::Blue).size();
    for (const StepTexts& step : flow.steps) {
        blue.push_back(step.begins);
        if (!succeeded && (fails ? step.step == *fails : blue.size() == told)) {
            red = {step.fails, flow.failure};
            break;
        }
    }
    if (succeeded && !flow.steps.empty()) {
        blue.emplace_back(flow.success);
    }
    EXPECT_EQ(reporter.texts(Kind::Blue), blue);
    EXPECT_EQ(reporter.texts(Kind::Red), red);
}

Clock::Duration longestFor(const std::string& observed)
{
    constexpr Clock::Duration kPause = 128ms; // after every attempt to erase, and every failed one
                                              // to restart
    Clock::Duration longest = 3 * kPause; // attempts that do not reach the hub any more, and end
                                          // the flow
    for (const char request : observed) {
        if (request == 'm' || request == 'f') {
            longest += 20 * 2s;
        } else if (request == 'e') {
            longest += kPause;
        }
    }
    return longest;
}

} // namespace vornadel::test
