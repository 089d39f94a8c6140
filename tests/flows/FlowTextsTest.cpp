// The red lines of each failure, and the lines of an erase; the other flows have their own tests.

#include "flows/FlowTexts.h"
#include "flows/FlashErase.h"

#include "tests/flows/FlowTable.h"
#include "tests/support/RecordingReporter.h"
#include "tests/support/SimulatedSetup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

} // namespace

} // namespace vornadel::test
