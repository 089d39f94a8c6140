// Two faults of an update: the second one strikes later in the same run or, if the first has ended
// that run, in the next. The general conditions hold for every run, and a healthy update succeeds
// at the end. There are many pairs, and so far they have found nothing that single faults had not,
// so this is a separate program that runs on request.

#include "tests/flows/FaultTable.h"

#include <gtest/gtest.h>

#include <ostream>

namespace vornadel::test
{

namespace
{

constexpr int kMostRuns = 3;

struct PairRow {
    FaultVariant first;
    HubCode runs;
};

std::string nameOf(const PairRow& row)
{
    return std::string(row.first.name) + (row.runs == HubCode::Flash ? "InFlashCode" : "InRomCode");
}

void PrintTo(const PairRow& row, std::ostream* stream) { *stream << nameOf(row); }

std::vector<PairRow> everyRow()
{
    std::vector<PairRow> rows;
    for (const FaultVariant& variant : kFaultVariants) {
        for (const HubCode runs : {HubCode::Flash, HubCode::Rom}) {
            rows.push_back({variant, runs});
        }
    }
    return rows;
}

class FaultPairs : public testing::TestWithParam<PairRow>
{
protected:
    static void tryBoth(const FaultVariant& first, std::size_t at, const FaultVariant& second,
                        std::size_t index)
    {
        SCOPED_TRACE(std::string(second.name) + " at " + std::to_string(index) + " after " +
                     std::to_string(at));
        const std::string wire = easyUpdate().wireFrom(GetParam().runs);
        SimulatedSetup setup(hubThatRuns(GetParam().runs));
        setup.hub().addFault(first.at(positionOf(first.kind, wire, at)));
        setup.hub().addFault(second.at(positionOf(second.kind, wire, index)));
        for (int run = 0; run < kMostRuns && setup.hub().faultsTriggered() < 2; ++run) {
            const FaultyRun update(easyUpdate(), setup);
            expectTold(easyUpdate(), update.told, update.succeeded);
            powerUp(setup, first.amount + second.amount);
        }
        EXPECT_GT(setup.hub().faultsTriggered(), 0U);
        expectHealthyUpdate(setup);
    }
};

} // namespace

TEST_P(FaultPairs, EndTrulyAndTheNextUpdateSucceeds)
{
    const std::string wire = easyUpdate().wireFrom(GetParam().runs);
    const std::vector<std::size_t> places = placesOf(GetParam().first, wire);
    EXPECT_FALSE(places.empty());
    for (const std::size_t at : places) {
        for (const FaultVariant& second : kFaultVariants) {
            for (const std::size_t index : placesOf(second, wire)) {
                if (index > at && !HasFailure()) {
                    tryBoth(GetParam().first, at, second, index);
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OfAnUpdate, FaultPairs, testing::ValuesIn(everyRow()),
                         [](const auto& row) { return nameOf(row.param); });

} // namespace vornadel::test
