// A thousand updates in one process, as on a production line: neither memory nor descriptors grow.

#include "hub/HubDetection.h"
#include "tests/flows/FlowTable.h"
#include "tests/support/Resources.h"
#include "tests/support/SimulatedSetup.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>

#include <unistd.h>

namespace vornadel::test
{

namespace
{

constexpr int kUpdates = 1000;
constexpr int kWarmUp = 100;

/// A hub whose flash is a file, so that every open takes a lock and every write replaces the file.
class Endurance : public testing::Test
{
public:
    Endurance()
    {
        // In memory where there is such a place: ten thousand times, a disk would be waited for.
        const std::filesystem::path memory = "/dev/shm";
        const bool there = access(memory.c_str(), W_OK) == 0;
        std::string pattern =
            (there ? memory : std::filesystem::temp_directory_path()) / "endurance-XXXXXX";
        m_folder = mkdtemp(pattern.data());
        SimulatedHubOptions options;
        options.image = m_folder + "/flash.bin";
        options.latency = SimulatedLatency::None;
        std::string error;
        bus = SimulatedBus::create(options, clock, error);
        EXPECT_TRUE(bus) << error;
        SupportedIdList.fill({});
        SupportedIdList.at(0) = {1, 0x1209, 0x0001, 0x0002};
        Hub_UsePlatform(*bus, clock);
    }
    ~Endurance() override { std::filesystem::remove_all(m_folder); }

protected:
    /// The next hub of the line: looked at, updated, looked at again.
    void update()
    {
        bus->hub().setFlash(oldFlash());
        EXPECT_TRUE(Hub_Detect().found);
        {
            ToldValues told;
            EXPECT_TRUE(easyUpdate().run(bus->hub(), told));
        }
        EXPECT_EQ(Hub_Detect().version, kDemoVersion101);
        clock.forgetPauses();
    }

    /// Does it a thousand times and expects the process to be the same after that as after the
    /// first hundred.
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
        // The smallest block that can be left behind has 24 bytes; the heap's own caches breathe by
        // less in all.
        EXPECT_LT(late.bytes, early.bytes + kUpdates);
        EXPECT_EQ(late.descriptors, early.descriptors);
    }

    VirtualClock clock;
    std::unique_ptr<SimulatedBus> bus;

private:
    std::string m_folder;
};

TEST_F(Endurance, AThousandUpdatesLeaveNothingBehind)
{
    expectFlat([this] { update(); });
}

TEST_F(Endurance, AThousandFailuresLeaveNothingBehind)
{
    expectFlat([this] {
        bus->hub().addFault({.kind = FaultKind::VanishAfter, .on = RequestKind::Write});
        ToldValues told;
        EXPECT_FALSE(easyUpdate().run(bus->hub(), told));
        bus->hub().replug();
        clock.forgetPauses();
    });
}

} // namespace

} // namespace vornadel::test
