#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace vornadel
{

class SimulatedHub;

/// The connectors that the simulated hubs of one program are plugged into. Hub K begins at "sim-K".
/// All members may be called from any thread.
class Connectors
{
public:
    void add(const std::shared_ptr<SimulatedHub>& hub); ///< does not keep it alive
    /// A connector that no hub has had. Call it when all hubs have been added.
    std::string unused();
    /// The hub that was added after this one, or the first after the last. Null if there is no
    /// other.
    std::shared_ptr<SimulatedHub> next(const SimulatedHub& hub);

    /// A number for a hub's stay on the bus: another one each time, never 0.
    std::uint64_t nextStay() { return ++m_stays; }

private:
    std::atomic<std::uint64_t> m_stays = 0;
    std::mutex m_mutex; // guards what follows
    std::vector<std::weak_ptr<SimulatedHub>> m_hubs;
    std::size_t m_moves = 0;
};

} // namespace vornadel
