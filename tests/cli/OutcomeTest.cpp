#include "cli/Outcome.h"

#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace vornadel::test
{

namespace
{

using testing::EndsWith;

TEST(Outcome, OfAnOpenThatFailedIsItsCause)
{
    const struct {
        HubFailure failure;
        std::string id;
        std::string what;
    } rows[] = {
        {HubFailure::None, "internal", "the reason is not known"},
        {HubFailure::NoHub, "no-hub", "no supported hub is at 2-3/1-3 any more"},
        {HubFailure::NoAccess, "no-access", "permission is missing"},
        {HubFailure::Busy, "busy", "the hub is busy: process 42 works on it"},
        {HubFailure::NotOpened, "open-failed",
         "the system could not open the hub, and gave no reason"},
        {HubFailure::Unplugged, "unplugged", "the hub was unplugged"},
        {HubFailure::Stalled, "stalled", "the hub refused the request (stall)"},
        {HubFailure::Short, "short-transfer", "the hub moved too few bytes (short transfer)"},
        {HubFailure::TimedOut, "timed-out", "the hub did not answer in time"},
        {HubFailure::NotAnswered, "request-failed", "the request failed"},
        {HubFailure::NotRestarted, "not-restarted",
         "the hub did not restart, although it confirmed it"},
        {HubFailure::NotReturned, "not-returned", "the hub did not return to 2-3/1-3"},
        {HubFailure::AnotherHub, "another-hub", "another hub is at 2-3/1-3 now"},
        {HubFailure::NoRomCode, "no-rom-code",
         "the hub does not run its ROM code after the restart"},
        {HubFailure::NoFlashCode, "still-rom-code", "the hub still runs its ROM code"},
        {HubFailure::OtherVersion, "other-version", "the hub runs another firmware version"},
        {HubFailure::Abandoned, "interrupted", "the program was stopped"},
    };
    for (const auto& row : rows) {
        const Failure failure = outcomeOf(row.failure, {"2-3/1-3", 42, "do this"});
        EXPECT_EQ(kindOf(failure.id).name, row.id);
        EXPECT_EQ(failure.what, row.what);
        EXPECT_EQ(failure.next, row.failure == HubFailure::NoAccess ? "do this" : "");
        const FlowResult result{
            .step = Step::Open, .cause = Cause::NotOpened, .failure = row.failure};
        EXPECT_EQ(outcomeOf(FlowKind::Update, result, {"2-3/1-3", 42, "do this"}).what, row.what);
    }
    EXPECT_EQ(outcomeOf(HubFailure::NotReturned, {}).what, "the hub did not return to its place");
}

TEST(Outcome, OfAnUpdateIsToldByStatusAndFourLines)
{
    const struct {
        std::string options;
        int status;
        std::string what; ///< the first line
        std::string hub;  ///< the second
        bool look = false;
    } rows[] = {
        {"fault=never@1", 7, "the hub did not return to sim-1 [not-returned]",
         "not at its place, flash unchanged; plug it in again first"},
        {"fault=same-mode@1", 7,
         "the hub does not run its ROM code after the restart [no-rom-code]",
         "runs its firmware, flash unchanged"},
        {"fault=vanish-before@open-time#2", 7, "the hub was unplugged [unplugged]",
         "not at its place, flash unchanged; plug it in again first"},
        {"fault=ignore@rom", 7, "the hub did not restart, although it confirmed it [not-restarted]",
         "runs its firmware, flash unchanged"},
        {"fault=vanish-before@write#2", 7, "the hub was unplugged: write at 0x1000 [unplugged]",
         "not at its place, flash incomplete; plug it in again first"},
        {"fault=torn:5@write#3", 7,
         "the hub moved too few bytes (short transfer): write at 0x2000 [short-transfer]",
         "runs its ROM code, flash incomplete"},
        {"fault=stall@read#24", 7, "the hub refused the request (stall): read at 0x7000 [stalled]",
         "runs its ROM code, flash written, but not compared"},
        {"fault=never@2", 9, "verified, but the hub did not return to sim-1 [not-back]",
         "not at its place, flash as in the image; plug it in again first", true},
        {"fault=same-mode@2", 9, "verified, but the hub still runs its ROM code [still-rom-code]",
         "runs its ROM code, flash as in the image; plug it in again first", true},
        {"fault=ignore@flash", 9,
         "verified, but the hub did not restart, although it confirmed it [not-back]",
         "runs its ROM code, flash as in the image; plug it in again first", true},
        {"fault=stall@flash", 9, "verified, but the hub refused the request (stall) [not-back]",
         "runs its ROM code, flash as in the image; plug it in again first", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.options);
        Session session("latency=none," + row.options);
        const std::string image = session.folder.write("new.bin", demoImage(kDemoVersion101));
        CommandLine line = session.line("update", image);
        line.typed = {"update", image};
        EXPECT_EQ(session.run(line), row.status);
        const std::string next = row.look ? "info" : "update " + image;
        EXPECT_THAT(session.err.str(),
                    EndsWith("\nUpdate FW Fail\n" + row.what + "\n  hub:  " + row.hub +
                             "\n  next: vornadelctl --path sim-1 " + next +
                             "\n  log:  " + session.state.path("vornadel/vornadelctl.log") + '\n'));
    }
}

TEST(Outcome, IsFollowedByACommandThatFindsTheHubInItsRomCode)
{
    const std::string place = "vornadelctl --path sim-1 ";
    const struct {
        std::vector<std::string> typed;
        std::string next;
    } rows[] = {
        {{"--serial", "SN0001", "erase", "-q"}, place + "erase -q"},
        {{"erase", "--serial=SN0001"}, place + "erase"},
        {{"-S", "SN0001", "erase", "--", "-S"}, place + "erase -- -S"},
        {{"-SSN0001", "--id", "1209:0001", "--container=5d", "erase"}, place + "erase"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.next);
        Session session("latency=none,fault=ignore@erase");
        CommandLine line = session.line("erase");
        line.hub.serialNumber = "SN0001";
        line.typed = row.typed;
        EXPECT_EQ(session.run(line), kExitDiffers);
        EXPECT_THAT(session.err.str(), HasSubstr("\n  next: " + row.next + "\n"));
    }
    Session session("hubs=2,latency=none,fault=swapped@1");
    CommandLine line = session.line("erase");
    line.hub.path = "sim-1";
    line.typed = {"--path", "sim-1", "erase"};
    EXPECT_EQ(session.run(line), kExitTransferFailed);
    EXPECT_THAT(session.err.str(), HasSubstr("\n  next: vornadelctl list\n"))
        << "its place is another hub's now";
}

TEST(Outcome, NamesWhatWasDoneBeforeAHubDidNotComeBack)
{
    const struct {
        FlowKind flow;
        std::string done;
    } rows[] = {{FlowKind::Update, "verified"}, {FlowKind::Read, "read"},
                {FlowKind::Erase, "erased"},    {FlowKind::Restore, "verified"},
                {FlowKind::Verify, "compared"}, {FlowKind::Restart, "asked"}};
    const FlowResult result{.cause = Cause::NotRestarted, .failure = HubFailure::NotReturned};
    for (const auto& row : rows) {
        EXPECT_EQ(outcomeOf(row.flow, result, {"2-3", 0, ""}).what,
                  row.done + ", but the hub did not return to 2-3");
    }
}

TEST(Outcome, OfAFlowThatStoppedSaysSo)
{
    FlowResult result{.step = Step::Open, .cause = Cause::Interrupted};
    EXPECT_EQ(outcomeOf(FlowKind::Update, result, {}).what, "stopped");
    result.failure = HubFailure::NotReturned;
    EXPECT_EQ(outcomeOf(FlowKind::Update, result, {"2-3", 0, ""}).what,
              "stopped, but the hub could not be sent back to its firmware: the hub did not "
              "return to 2-3");
}

} // namespace

} // namespace vornadel::test
