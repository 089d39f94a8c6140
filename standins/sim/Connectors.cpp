#include "standins/sim/Connectors.h"

#include "standins/sim/SimulatedHub.h"

#include <algorithm>

namespace vornadel
{

void Connectors::add(const std::shared_ptr<SimulatedHub>& hub)
{
    const std::lock_guard lock(m_mutex);
    m_hubs.push_back(hub);
}

std::string Connectors::unused()
{
    const std::lock_guard lock(m_mutex);
    return "sim-" + std::to_string(m_hubs.size() + ++m_moves);
}

std::shared_ptr<SimulatedHub> Connectors::next(const SimulatedHub& hub)
{
    const std::lock_guard lock(m_mutex);
    const auto self = std::find_if(m_hubs.begin(), m_hubs.end(), [&](const auto& candidate) {
        return candidate.lock().get() == &hub;
    });
    if (self == m_hubs.end() || m_hubs.size() < 2) {
        return nullptr;
    }
    return (self + 1 == m_hubs.end() ? m_hubs.front() : *(self + 1)).lock();
}

} // namespace vornadel
