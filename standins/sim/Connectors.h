#pragma once

#include <atomic>
#include <cstdint>

namespace vornadel
{

/// What the simulated hubs of one machine share. All members may be called from any thread.
class Connectors
{
public:
    /// A number for a hub's stay on the bus: another one each time, never 0.
    std::uint64_t nextStay() { return ++m_stays; }

private:
    std::atomic<std::uint64_t> m_stays = 0;
};

} // namespace vornadel
