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
using testing::StartsWith;

TEST(Outcome, OfAnOpenThatFailedIsItsCause)
{
    const struct {
        HubFailure failure;
        int status;
        std::string begin;
        bool replug = false;
    } rows[] = {
        {HubFailure::None, 1, "the reason is not known"},
        {HubFailure::NoHub, 3, "no supported hub is at 2-3/1-3 any more"},
        {HubFailure::NoAccess, 5, "permission is missing; to grant it: do this; then plug"},
        {HubFailure::Busy, 11, "the hub is busy: process 42 works on it"},
        {HubFailure::NotOpened, 1, "the system could not open the hub"},
        {HubFailure::Unplugged, 7, "the hub was unplugged"},
        {HubFailure::Stalled, 7, "the hub refused the request (stall)"},
        {HubFailure::Short, 7, "the hub moved too few bytes (short transfer)"},
        {HubFailure::TimedOut, 7, "the hub did not answer in time"},
        {HubFailure::NotAnswered, 7, "the request failed"},
        {HubFailure::NotRestarted, 1, "the hub did not restart, although it confirmed it", true},
        {HubFailure::NotReturned, 1, "the hub did not return to 2-3/1-3", true},
        {HubFailure::AnotherHub, 1, "another hub is at 2-3/1-3 now", true},
        {HubFailure::NoRomCode, 1, "the hub does not run its ROM code after the restart", true},
        {HubFailure::NoFlashCode, 9, "the hub still runs its ROM code"},
        {HubFailure::OtherVersion, 9, "the hub runs another firmware version"},
        {HubFailure::Abandoned, 1, "the program was stopped", true},
    };
    for (const auto& row : rows) {
        const Outcome outcome =
            outcomeOf(FlowKind::Update,
                      {.step = Step::Open, .cause = Cause::NotOpened, .failure = row.failure},
                      {"2-3/1-3", 42, "do this"});
        EXPECT_EQ(outcome.status, row.status) << row.begin;
        EXPECT_THAT(outcome.text, StartsWith(row.begin));
        EXPECT_THAT(outcome.text, EndsWith(row.status == 7 || row.replug
                                               ? "; the flash is unchanged; plug the hub in again "
                                                 "and repeat"
                                               : "; the flash is unchanged"));
    }
}

TEST(Outcome, OfAnUpdateIsToldByStatusAndSentence)
{
    const std::string again = "; the flash may hold no whole firmware; run the update again\n";
    const std::string repeat = "; the flash is unchanged; plug the hub in again and repeat\n";
    const std::string look =
        "; plug the hub in again, then \"vornadelctl info\" tells what it runs\n";
    const struct {
        std::string options;
        int status;
        std::string end; ///< of standard error
    } rows[] = {
        {"fault=never@1", 1, "the hub did not return to sim-1" + repeat},
        {"fault=same-mode@1", 1, "the hub does not run its ROM code after the restart" + repeat},
        {"fault=vanish-before@open-time#2", 7, "the hub was unplugged" + repeat},
        {"fault=ignore@rom", 1, "the hub did not restart, although it confirmed it" + repeat},
        {"fault=vanish-before@write#2", 7, "the hub was unplugged: write at 0x1000" + again},
        {"fault=torn:5@write#3", 7,
         "the hub moved too few bytes (short transfer): write at 0x2000" + again},
        {"fault=stall@read#8", 7, "the hub refused the request (stall): read at 0x7000" + again},
        {"fault=never@2", 9, "verified, but the hub did not return to sim-1" + look},
        {"fault=same-mode@2", 9, "verified, but the hub still runs its ROM code" + look},
        {"fault=ignore@flash", 9,
         "verified, but the hub did not restart, although it confirmed it" + look},
        {"fault=stall@flash", 9, "verified, but the hub refused the request (stall)" + look},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.options);
        Session session("latency=none," + row.options);
        EXPECT_EQ(session.update(session.folder.write("new.bin", demoImage(kDemoVersion101))),
                  row.status);
        EXPECT_THAT(session.err.str(), EndsWith("\nUpdate FW Fail\n" + row.end));
    }
}

TEST(Outcome, OfAFlowThatWasAbandonedIsNoFailureOfTheHub)
{
    const Outcome outcome = outcomeOf(
        FlowKind::Erase,
        {.step = Step::Erase, .cause = Cause::RequestFailed, .failure = HubFailure::Abandoned}, {});
    EXPECT_EQ(outcome.status, kExitFailure);
    EXPECT_EQ(outcome.text, "the program was stopped: erase; the flash may be erased or not; erase "
                            "it again");
    EXPECT_EQ(outcomeOf(HubFailure::NotReturned, {}).text, "the hub did not return to its place");
}

TEST(Outcome, OfAnEraseWhoseHubDoesNotComeBackSaysThatItIsErased)
{
    const Outcome outcome = outcomeOf(
        FlowKind::Erase, {.cause = Cause::NotRestarted, .failure = HubFailure::NotReturned},
        {"2-3", 0, ""});
    EXPECT_EQ(outcome.status, kExitNotConfirmed);
    EXPECT_THAT(outcome.text, StartsWith("erased, but the hub did not return to 2-3; "));
}

TEST(Outcome, OfAFlowThatStoppedSaysThatTheFlashIsUnchanged)
{
    FlowResult result{.step = Step::Open, .cause = Cause::Interrupted};
    EXPECT_EQ(outcomeOf(FlowKind::Update, result, {}).text, "stopped; the flash is unchanged");
    result.failure = HubFailure::NotReturned;
    const Outcome outcome = outcomeOf(FlowKind::Update, result, {"2-3", 0, ""});
    EXPECT_EQ(outcome.status, kExitFailure);
    EXPECT_THAT(outcome.text,
                StartsWith("stopped; the flash is unchanged, but the hub could not be "
                           "sent back to its firmware: the hub did not return to "
                           "2-3; plug the hub in again"));
}

TEST(Outcome, OfAnUpdateThatRunsAnotherVersionIsNoSuccess)
{
    const FlowResult result{.cause = Cause::NotConfirmed, .failure = HubFailure::OtherVersion};
    const Outcome outcome = outcomeOf(FlowKind::Update, result, {});
    EXPECT_EQ(outcome.status, kExitNotConfirmed);
    EXPECT_THAT(outcome.text, StartsWith("verified, but the hub runs another firmware version; "));
}

} // namespace

} // namespace vornadel::test
