// Two faults of an update: the second one strikes later in the same run or, if the first has ended
// that run, in the next. The general conditions hold for every pair, and a healthy update succeeds
// at the end. There are many pairs, and so far they have found nothing that single faults had not,
// so this is a separate program that runs on request.

#include "tests/flows/FaultyRun.h"

#include <gtest/gtest.h>

#include <numeric>
#include <ostream>

namespace vornadel::test
{

namespace
{

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

struct Second {
    FaultVariant variant;
    unsigned position;
};

bool isRequestFault(const FaultVariant& variant)
{
    return strikes(variant.kind) == Strikes::Request;
}

/// Whether the second fault comes after the first in the requests that remain of a run. Two of
/// different kinds may strike the same request.
bool canFollow(const FaultVariant& first, std::size_t at, const FaultVariant& second,
               std::size_t index)
{
    if (index != at) {
        return index > at;
    }
    switch (strikes(first.kind)) {
    case Strikes::Open: // then the open that succeeds, and its request
        return strikes(second.kind) != Strikes::Restart;
    case Strikes::Request: // the restart comes after the request that takes effect
        return (isRequestFault(second) && second.kind != first.kind) ||
               (strikes(second.kind) == Strikes::Restart && first.kind == FaultKind::VanishAfter);
    case Strikes::Restart:
        return strikes(second.kind) == Strikes::Restart && second.kind != first.kind;
    }
    return false;
}

/// All second faults in the same run.
std::vector<Second> secondsAfter(const FaultVariant& first, std::size_t at, const Outcome& outcome)
{
    std::vector<Second> seconds;
    const unsigned refused = strikes(first.kind) == Strikes::Open ? first.amount : 0;
    for (const FaultVariant& second : kFaultVariants) {
        for (const std::size_t index : placesOf(second, outcome.wire)) {
            if (canFollow(first, at, second, index)) {
                seconds.push_back({second, positionOf(second.kind, outcome.wire, index, refused)});
            }
        }
    }
    return seconds;
}

/// All second faults in the next run.
std::vector<Second> secondsIn(HubCode runs)
{
    std::vector<Second> seconds;
    const std::string wire = easyUpdate().wireFrom(runs);
    for (const FaultVariant& second : kFaultVariants) {
        for (const std::size_t index : placesOf(second, wire)) {
            seconds.push_back({second, positionOf(second.kind, wire, index)});
        }
    }
    return seconds;
}

/// A first fault and all its second faults.
struct Pairs {
    Fault first;
    HubCode afterwards;
    std::vector<Second> inThisRun;
    std::vector<Second> inTheNextRun;
};

std::vector<Pairs> pairsOf(const PairRow& row)
{
    std::vector<Pairs> all;
    const std::string wire = easyUpdate().wireFrom(row.runs);
    for (const std::size_t at : placesOf(row.first, wire)) {
        const Outcome outcome = outcomeOf(easyUpdate(), row.runs, row.first, at);
        all.push_back({row.first.at(positionOf(row.first.kind, wire, at)), outcome.afterwards,
                       secondsAfter(row.first, at, outcome),
                       outcome.fails ? secondsIn(outcome.afterwards) : std::vector<Second>()});
    }
    return all;
}

std::size_t countOf(const std::vector<Pairs>& all)
{
    return std::accumulate(all.begin(), all.end(), std::size_t{0},
                           [](std::size_t sum, const Pairs& pairs) {
                               return sum + pairs.inThisRun.size() + pairs.inTheNextRun.size();
                           });
}

class FaultPairs : public testing::TestWithParam<PairRow>
{
protected:
    void tryAll(const Pairs& pairs)
    {
        for (const Second& second : pairs.inThisRun) {
            inOneRun(pairs.first, second);
        }
        for (const Second& second : pairs.inTheNextRun) {
            inTheNextRun(pairs.first, second, pairs.afterwards);
        }
    }

private:
    void inOneRun(const Fault& first, const Second& second)
    {
        SCOPED_TRACE(std::string(second.variant.name) + " at " + std::to_string(second.position) +
                     " after " + std::to_string(first.position));
        SimulatedSetup setup(hubThatRuns(GetParam().runs));
        setup.hub().addFault(first);
        setup.hub().addFault(second.variant.at(second.position));
        expectATrueEnd(setup, 2);
        expectHealthyUpdate(setup, first.amount + second.variant.amount);
    }

    void inTheNextRun(const Fault& first, const Second& second, HubCode startsWith)
    {
        SCOPED_TRACE(std::string(second.variant.name) + " at " + std::to_string(second.position) +
                     " in the run after " + std::to_string(first.position));
        std::vector<std::uint8_t> left;
        {
            SimulatedSetup before(hubThatRuns(GetParam().runs));
            before.hub().addFault(first);
            expectATrueEnd(before, 1);
            left = before.hub().flash();
        }
        SimulatedSetup setup(hubThatRuns(HubCode::Flash, left));
        EXPECT_EQ(setup.hub().runningCode(), startsWith);
        setup.hub().addFault(second.variant.at(second.position));
        expectATrueEnd(setup, 1);
        expectHealthyUpdate(setup, second.variant.amount);
    }

    static void expectATrueEnd(SimulatedSetup& setup, unsigned faults)
    {
        const FaultyRun run(easyUpdate(), setup);
        expectTold(easyUpdate(), run.told, run.succeeded);
        EXPECT_EQ(setup.hub().faultsTriggered(), faults);
    }
};

} // namespace

TEST_P(FaultPairs, EndTrulyAndTheNextUpdateSucceeds)
{
    const std::vector<Pairs> all = pairsOf(GetParam());
    for (const Pairs& pairs : all) {
        if (!HasFailure()) {
            tryAll(pairs);
        }
    }
    EXPECT_GT(countOf(all), 0U);
}

TEST(FaultPairsInAll, AreThisMany)
{
    std::size_t pairs = 0;
    for (const PairRow& row : everyRow()) {
        pairs += countOf(pairsOf(row));
    }
    EXPECT_EQ(pairs, 73688U);
}

INSTANTIATE_TEST_SUITE_P(OfAnUpdate, FaultPairs, testing::ValuesIn(everyRow()),
                         [](const auto& row) { return nameOf(row.param); });

} // namespace vornadel::test
