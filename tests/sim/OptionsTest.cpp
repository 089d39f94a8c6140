#include "standins/sim/SimulatedHubOptions.h"

#include "standins/sim/FlashFile.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace vornadel::test
{
namespace
{

using namespace std::chrono_literals;
using testing::HasSubstr;

SimulatedHubOptions parsed(const std::string& text)
{
    SimulatedHubOptions options;
    std::string error;
    EXPECT_TRUE(parseSimulatedHubOptions(text, options, error)) << error;
    EXPECT_EQ(error, "");
    return options;
}

std::string refusal(const std::string& text)
{
    SimulatedHubOptions options;
    options.image = "before";
    std::string error;
    EXPECT_FALSE(parseSimulatedHubOptions(text, options, error)) << text;
    EXPECT_EQ(options.image, "before");
    EXPECT_TRUE(options.faults.empty());
    return error;
}

TEST(SimulatedHubOptions, ReadsEveryKey)
{
    const auto options = parsed(
        "image=/tmp/a b.bin,latency=none,mode=rom,ids=1209:5AB3:0x00fF,fault=stall@5,fault=never");
    EXPECT_EQ(options.image, "/tmp/a b.bin");
    EXPECT_EQ(options.latency, SimulatedLatency::None);
    EXPECT_EQ(options.mode, HubCode::Rom);
    ASSERT_TRUE(options.ids);
    EXPECT_EQ(options.ids->vendorId, 0x1209);
    EXPECT_EQ(options.ids->superSpeedId, 0x5AB3);
    EXPECT_EQ(options.ids->highSpeedId, 0x00FF);
    ASSERT_EQ(options.faults.size(), 2U);
    EXPECT_EQ(options.faults[0].kind, FaultKind::Stall);
    EXPECT_EQ(options.faults[0].position, 5U);
    EXPECT_EQ(options.faults[1].kind, FaultKind::Never);
}

TEST(SimulatedHubOptions, NamesWhatItDoesNotUnderstand)
{
    EXPECT_THAT(refusal("speed=high"), HasSubstr("unknown option \"speed=high\""));
    EXPECT_THAT(refusal("latency=none,"), HasSubstr("unknown option \"\""));
    EXPECT_THAT(refusal("mode"), HasSubstr("mode needs a value"));
    EXPECT_THAT(refusal("image=x,image=y"), HasSubstr("image is given twice"));
    EXPECT_THAT(refusal("image="), HasSubstr("file name"));
    EXPECT_THAT(refusal("image=x,latency=slow"), HasSubstr("\"slow\""));
    EXPECT_THAT(refusal("mode=ROM"), HasSubstr("\"ROM\""));
    EXPECT_THAT(refusal("fault=stall@1,fault=melt"), HasSubstr("\"melt\""));
}

TEST(SimulatedHubOptions, RefusesIdsThatAreNotThreeWords)
{
    for (const char* ids : {"", "1209", "1209:1", "1209:1:2:3", "1209::2", "1209:1:12345",
                            "1209:1:00001", "1209:1:-1", "1209:1:g", "1209:1: 2", "0x:1:2"}) {
        EXPECT_THAT(refusal(std::string("ids=") + ids), HasSubstr("VID:SSPID:HSPID")) << ids;
    }
}

std::vector<SimulatedHubOptions> hubsOf(const std::string& text)
{
    std::vector<SimulatedHubOptions> hubs;
    std::string error;
    EXPECT_TRUE(parseSimulatedHubs(text, hubs, error)) << error;
    return hubs;
}

TEST(SimulatedHubs, TakeTheirOwnValuesBeforeThoseOfAll)
{
    const auto hubs = hubsOf("ids=2:1:2:3,mode=3:flash,fault=never,fault=3:torn:7,mode=rom,"
                             "ids=4:5:6,latency=none,image=/a.b/hub.bin,hubs=3");
    ASSERT_EQ(hubs.size(), 3U);
    EXPECT_EQ(hubs[0].image, "/a.b/hub.bin");
    EXPECT_EQ(hubs[1].image, "/a.b/hub-2.bin");
    EXPECT_EQ(hubs[2].image, "/a.b/hub-3.bin");
    EXPECT_EQ(hubs[2].latency, SimulatedLatency::None);
    EXPECT_EQ(hubs[1].mode, HubCode::Rom);
    EXPECT_EQ(hubs[2].mode, HubCode::Flash);
    EXPECT_EQ(hubs[0].ids->vendorId, 4);
    EXPECT_EQ(hubs[1].ids->vendorId, 1);
    EXPECT_EQ(hubs[0].faults.at(0).kind, FaultKind::Never);
    EXPECT_TRUE(hubs[1].faults.empty());
    EXPECT_EQ(hubs[2].faults.at(0).amount, 7U);
    EXPECT_EQ(hubsOf("").size(), 1U);
    EXPECT_EQ(hubsOf("hubs=64").size(), 64U);
}

TEST(SimulatedHubs, AreRefusedWithAReason)
{
    const std::vector<std::pair<const char*, const char*>> rows = {
        {"hubs=0", "from 1 to 64"},
        {"hubs=65", "from 1 to 64"},
        {"hubs", "hubs needs a value"},
        {"hubs=2,hubs=2", "hubs is given twice"},
        {"hubs=2,fault=3:never", "no hub 3"},
        {"fault=0:never", "no hub 0"},
        {"hubs=2,mode=2:rom,mode=2:rom", "mode is given twice"},
        {"hubs=2,latency=2:none", "\"2:none\""},
        {"hubs=2,ids=3:1:2:3", "no hub 3"},
        {"speed=1", "the options are hubs, image"},
    };
    for (const auto& [text, reason] : rows) {
        std::vector<SimulatedHubOptions> hubs(7);
        std::string error;
        EXPECT_FALSE(parseSimulatedHubs(text, hubs, error)) << text;
        EXPECT_THAT(error, HasSubstr(reason)) << text;
        EXPECT_EQ(hubs.size(), 7U);
    }
    EXPECT_THAT(refusal("hubs=2"), HasSubstr("the options are image"));
}

struct FaultText {
    const char* text;
    Fault fault;
};

TEST(FaultText, IsReadInAllItsForms)
{
    const std::vector<FaultText> rows = {
        {"stall@5", {FaultKind::Stall, {}, 5}},
        {"stall@write#2", {FaultKind::Stall, RequestKind::Write, 2}},
        {"stall@open-time", {FaultKind::Stall, RequestKind::OpenTime, 1}},
        {"vanish-before@status#3", {FaultKind::VanishBefore, RequestKind::Status, 3}},
        {"vanish-after@rom", {FaultKind::VanishAfter, RequestKind::Rom, 1}},
        {"ignore@flash", {FaultKind::Ignore, RequestKind::Flash, 1}},
        {"ignore@erase", {FaultKind::Ignore, RequestKind::Erase, 1}},
        {"flip@read#8", {FaultKind::Flip, RequestKind::Read, 8}},
        {"flip@9", {FaultKind::Flip, {}, 9}},
        {"flip:4095@write#2", {FaultKind::Flip, RequestKind::Write, 2, 4095}},
        {"torn:100", {FaultKind::Torn, RequestKind::Write, 0, 100}},
        {"torn:0@write#4", {FaultKind::Torn, RequestKind::Write, 4, 0}},
        {"torn:7@6", {FaultKind::Torn, {}, 6, 7}},
        {"open-refused:2", {FaultKind::OpenRefused, {}, 0, 2}},
        {"open-refused:2@3", {FaultKind::OpenRefused, {}, 3, 2}},
        {"never@2", {FaultKind::Never, {}, 2}},
        {"late:12", {FaultKind::Late, {}, 0, 0, 12s}},
        {"late:0.25@2", {FaultKind::Late, {}, 2, 0, 250ms}},
        {"same-mode", {FaultKind::SameMode, {}, 0}},
        {"bounce@1", {FaultKind::Bounce, {}, 1}},
        {"ignored", {FaultKind::Ignored, {}, 0}},
        {"swapped@2", {FaultKind::Swapped, {}, 2}},
        {"moved", {FaultKind::Moved, {}, 0}},
        {"refused:40@2", {FaultKind::Refused, {}, 2, 0, 40ms}},
    };
    for (const FaultText& row : rows) {
        Fault fault;
        std::string error;
        ASSERT_TRUE(parseFault(row.text, fault, error)) << error;
        EXPECT_EQ(fault.kind, row.fault.kind) << row.text;
        EXPECT_EQ(fault.on, row.fault.on) << row.text;
        EXPECT_EQ(fault.position, row.fault.position) << row.text;
        EXPECT_EQ(fault.amount, row.fault.amount) << row.text;
        EXPECT_EQ(fault.delay, row.fault.delay) << row.text;
    }
}

TEST(FaultText, IsRefusedWithAReason)
{
    const std::vector<std::pair<const char*, const char*>> rows = {
        {"", "unknown fault"},
        {"stall", "needs a position"},
        {"stall@", "unknown request"},
        {"stall@0", "above 0"},
        {"stall@wriite#2", "\"wriite\""},
        {"stall@write#0", "above 0"},
        {"torn@write", "number from 0"},
        {"torn:65536", "number from 0"},
        {"torn:5@read", "no flash data"},
        {"flip@erase", "no flash data"},
        {"open-refused", "number from 1"},
        {"open-refused:0", "number from 1"},
        {"open-refused:1@write", "above 0"},
        {"never:1", "takes no argument"},
        {"late", "needs seconds"},
        {"late:-1", "needs seconds"},
        {"refused", "number from 1"},
        {"refused:1.5", "number from 1"},
    };
    for (const auto& [text, reason] : rows) {
        Fault fault;
        fault.position = 77;
        std::string error;
        EXPECT_FALSE(parseFault(text, fault, error)) << text;
        EXPECT_THAT(error, HasSubstr(reason)) << text;
        EXPECT_THAT(error, HasSubstr('"' + std::string(text) + '"'));
        EXPECT_EQ(fault.position, 77U);
    }
}

TEST(DefaultFlashFile, FollowsTheStateFolderThenTheHome)
{
    ::setenv("HOME", "/home/someone", 1); // of this process only
    ::setenv("XDG_STATE_HOME", "/var/state", 1);
    EXPECT_EQ(defaultFlashFile(), "/var/state/vornadel/simulated-hub.bin");
    for (const char* unusable : {"", "relative"}) {
        ::setenv("XDG_STATE_HOME", unusable, 1);
        EXPECT_EQ(defaultFlashFile(), "/home/someone/.local/state/vornadel/simulated-hub.bin");
    }
    ::unsetenv("XDG_STATE_HOME");
    EXPECT_EQ(defaultFlashFile(), "/home/someone/.local/state/vornadel/simulated-hub.bin");
    ::unsetenv("HOME");
    EXPECT_EQ(defaultFlashFile(), "");
}

} // namespace
} // namespace vornadel::test
