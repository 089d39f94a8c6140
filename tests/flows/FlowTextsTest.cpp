// The red lines of each failure; the lines of a success are in the tests of each flow.

#include "flows/FlowTexts.h"

#include "tests/flows/FlowTable.h"
#include "tests/flows/Told.h"

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

TEST(FlowTexts, MoveTheBarWithThePiecesOfAStepThatFails)
{
    RecordingReporter reporter;
    reporter.started({FlowKind::Read});
    reporter.stepStarted(Step::Open);
    reporter.stepStarted(Step::Read);
    reporter.progressed(4096, 32768);
    reporter.finished({Step::Read, Cause::RequestFailed, 4096});
    reporter.closed();
    EXPECT_THAT(told(reporter),
                ElementsAre("0%", "reset", "blue Open Device...\n", "10% posted",
                            "blue Reading Flash...\n", "20% posted", "red Fail to Read Flash\n",
                            "red Read Fw Fail\n", "0% posted"));
}

TEST(FlowTexts, DoNotMoveTheBarForAStepThatFailed)
{
    RecordingReporter reporter;
    reporter.started({FlowKind::Update, "demo.bin", 32768});
    reporter.stepStarted(Step::Open);
    reporter.stepStarted(Step::Erase);
    reporter.finished({Step::Erase, Cause::RequestFailed});
    reporter.closed();
    EXPECT_THAT(told(reporter), ElementsAre("reset", "0%", "blue FW:demo.bin(size=32768)\n\n",
                                            "blue Erase Flash...\n", "red Fail to Erase Flash\n",
                                            "red Update FW Fail\n"));
}

} // namespace

} // namespace vornadel::test
