// The red lines of each failure, and the lines of an erase; the update and the read have their own
// tests.

#include "flows/FlowTexts.h"
#include "flows/FlashErase.h"

#include "tests/flows/FlowTable.h"
#include "tests/support/RecordingReporter.h"
#include "tests/support/SimulatedSetup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

using testing::ElementsAre;
using Kind = RecordingReporter::Kind;

struct FlowRow {
    FlowKind kind;
    const Flow& flow;
};

TEST(FlowTexts, NameTheStepThatFailedAndThenTheFlow)
{
    for (const FlowRow& row : {FlowRow{FlowKind::Update, easyUpdate()},
                               {FlowKind::Read, flashRead()},
                               {FlowKind::Erase, flashErase()}}) {
        for (const auto& [step, reason] : row.flow.reasons) {
            RecordingReporter reporter;
            FlowReporter& told = reporter;
            told.started({row.kind});
            told.stepStarted(step);
            told.finished({step, Cause::RequestFailed});
            EXPECT_THAT(reporter.texts(Kind::Red), ElementsAre(reason, row.flow.failure));
        }
    }
}

TEST(FlowTexts, DoNotMoveTheBarForAStepThatFailed)
{
    RecordingReporter reporter;
    reporter.started({FlowKind::Update, "demo.bin", 32768});
    reporter.stepStarted(Step::Open);
    reporter.stepStarted(Step::Erase);
    reporter.finished({Step::Erase, Cause::RequestFailed});
    reporter.closed();
    EXPECT_THAT(reporter.lines(), ElementsAre("reset", "0%", "blue FW:demo.bin(size=32768)\n\n",
                                              "blue Erase Flash...\n", "red Fail to Erase Flash\n",
                                              "red Update FW Fail\n"));
}

TEST(FlowTexts, OfAnEraseComeInThisOrderAndLeaveTheBarAt0)
{
    const SimulatedSetup setup;
    RecordingReporter reporter;
    EXPECT_TRUE(eraseFlash(reporter));
    EXPECT_THAT(reporter.lines(),
                ElementsAre("reset", "0%", "blue Open Rom Device...\n", "blue Erase Flash...\n",
                            "blue Reseting...\n", "blue Erase FW Success\n"));
}

/// What a flow shows that goes through these steps, one piece of 10 bytes in each transfer.
std::vector<std::string> linesOf(FlowKind flow, std::initializer_list<Step> steps,
                                 const FlowResult& result)
{
    RecordingReporter reporter;
    FlowReporter& told = reporter;
    told.started({flow, "a.bin", flow == FlowKind::Restart ? 0 : 10});
    for (const Step step : steps) {
        told.stepStarted(step);
        if (step == Step::Write || step == Step::Read) {
            told.progressed(10, 10);
        }
    }
    told.finished(result);
    told.closed();
    return reporter.lines();
}

TEST(FlowTexts, OfTheFlowsThatOnlyTheCommandLineHas)
{
    EXPECT_THAT(linesOf(FlowKind::Restore,
                        {Step::Open, Step::Save, Step::Erase, Step::Write, Step::Read, Step::Verify,
                         Step::Restart},
                        {}),
                ElementsAre("reset", "0%", "blue FW:a.bin(size=10)\n\n", "blue Save Flash...\n",
                            "blue Erase Flash...\n", "10%", "blue Write Flash...\n", "50% posted",
                            "blue Read Flash...\n", "90% posted", "blue Verify Flash...\n", "100%",
                            "blue Reset to Flash Code...\n", "blue Restore FW Success\n"));
    EXPECT_THAT(linesOf(FlowKind::Restore, {Step::Open, Step::Save},
                        {.step = Step::Save, .cause = Cause::NotSaved}),
                ElementsAre("reset", "0%", "blue FW:a.bin(size=10)\n\n", "blue Save Flash...\n",
                            "red Fail to Save Flash\n", "red Restore FW Fail\n"));
    EXPECT_THAT(
        linesOf(FlowKind::Verify, {Step::Open, Step::Read, Step::Verify, Step::Restart}, {}),
        ElementsAre("reset", "0%", "blue FW:a.bin(size=10)\n\n", "blue Open Device...\n",
                    "10% posted", "blue Read Flash...\n", "80% posted", "blue Verify Flash...\n",
                    "90%", "blue Reset to Flash Code...\n", "100% posted",
                    "blue Verify FW Success\n"));
    EXPECT_THAT(linesOf(FlowKind::Restart, {Step::Open, Step::Restart}, {}),
                ElementsAre("reset", "0%", "blue Open Device...\n", "blue Restart Hub...\n",
                            "blue Restart Hub Success\n"));
    const auto failed = [](FlowKind flow, Step step) {
        const std::vector<std::string> lines =
            linesOf(flow, {step}, {.step = step, .cause = Cause::RequestFailed});
        return lines[lines.size() - 2] + lines.back();
    };
    EXPECT_EQ(failed(FlowKind::Verify, Step::Open),
              "red Fail to Open Rom Device\nred Verify FW Fail\n");
    EXPECT_EQ(failed(FlowKind::Verify, Step::Read), "red Fail to Read Flash\nred Verify FW Fail\n");
    EXPECT_EQ(failed(FlowKind::Verify, Step::Verify),
              "red Fail to verify flash\nred Verify FW Fail\n");
    EXPECT_EQ(failed(FlowKind::Verify, Step::Restart),
              "red Fail to Reset to Flash Code\nred Verify FW Fail\n");
    EXPECT_EQ(failed(FlowKind::Restart, Step::Open),
              "red Fail to Open Device\nred Restart Hub Fail\n");
    EXPECT_EQ(failed(FlowKind::Restart, Step::Restart),
              "red Fail to Restart Hub\nred Restart Hub Fail\n");
    EXPECT_EQ(failed(FlowKind::Erase, Step::Save), "red Fail to Save Flash\nred \nErase FW Fail\n");
}

} // namespace

} // namespace vornadel::test
