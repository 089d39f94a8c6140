// A thousand updates in one process, as on a production line: neither memory nor descriptors grow.

#include "hub/HubDetection.h"
#include "tests/flows/FlowTable.h"
#include "tests/support/Resources.h"
#include "tests/support/SimulatedSetup.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>

namespace vornadel::test
{

namespace
{

constexpr int kUpdates = 1000;
constexpr int kWarmUp = 100;

/// A hub whose flash is a file, so that every open takes a lock and every write replaces the file.
class Endurance : public testing::Test
{
protected:
    /// The next hub: detected, updated, detected again.
    void update()
    {
        m_setup.hub().setFlash(oldFlash());
        EXPECT_TRUE(Hub_Detect().found);
        {
            ToldValues told;
            EXPECT_TRUE(easyUpdate().run(m_setup.hub(), told));
        }
        EXPECT_EQ(Hub_Detect().version, kDemoVersion101);
        m_setup.clock.forgetPauses();
    }

    /// Repeats this a thousand times and expects the same resources at the end as after the first
    /// hundred.
    void expectFlat(const std::function<void()>& work)
    {
        Resources early{};
        for (int done = 0; done < kUpdates && !HasFailure(); ++done) {
            if (done == kWarmUp) {
                early = Resources::now();
            }
            work();
        }
        const Resources late = Resources::now();
        std::cout << kUpdates << " times; heap " << early.bytes << " -> " << late.bytes
                  << " bytes, descriptors " << early.descriptors << " -> " << late.descriptors
                  << '\n';
        // The smallest possible leak is a block of 24 bytes; the heap's own caches vary by less.
        EXPECT_LT(late.bytes, early.bytes + kUpdates);
        EXPECT_EQ(late.descriptors, early.descriptors);
    }

private:
    static SimulatedHubOptions hubIn(const TemporaryFolder& folder)
    {
        SimulatedHubOptions options;
        options.image = folder.path("flash.bin");
        options.latency = SimulatedLatency::None;
        return options;
    }

    const TemporaryFolder m_folder{placeInMemory()};

protected:
    HubSetup m_setup{hubIn(m_folder)};
};

TEST_F(Endurance, AThousandUpdatesLeaveNothingBehind)
{
    expectFlat([this] { update(); });
}

TEST_F(Endurance, AThousandFailuresLeaveNothingBehind)
{
    expectFlat([this] {
        m_setup.hub().addFault({.kind = FaultKind::VanishAfter, .on = RequestKind::Write});
        ToldValues told;
        EXPECT_FALSE(easyUpdate().run(m_setup.hub(), told));
        m_setup.hub().replug();
        m_setup.clock.forgetPauses();
    });
}

} // namespace

} // namespace vornadel::test
