#pragma once

#include <atomic>
#include <mutex>

namespace vornadel
{

/// A signal's request to stop, and how far the command has come. Any thread.
class StopRequest
{
public:
    enum class Phase {
        NoFlow,    ///< no flow runs: the command can end at its next request
        Asking,    ///< the same, and it waits for the user: it can end at once
        Unchanged, ///< the flow has not begun to change the hub's flash
        Changing,  ///< the flow must finish: it changes the flash, or restarts the hub for the last
                   ///< time
    };

    /// For FlowOptions.
    const std::atomic<bool>* flag() const { return &m_asked; }

    /// The command enters a phase. True if it was asked to stop before.
    bool enter(Phase phase)
    {
        const std::lock_guard lock(m_mutex);
        m_phase = phase;
        return m_asked;
    }

    /// Asks the command to stop, after `announce(phase)` has said how far it has come, so that the
    /// command's last words come later. Returns that phase.
    template <typename Announce>
    Phase ask(Announce announce)
    {
        const std::lock_guard lock(m_mutex);
        announce(m_phase);
        m_asked = true;
        m_asked.notify_all();
        return m_phase;
    }
    Phase ask()
    {
        return ask([](Phase /*phase*/) {});
    }

private:
    std::mutex m_mutex;
    Phase m_phase = Phase::NoFlow;
    std::atomic<bool> m_asked = false;
};

/// Said when a flow is asked to stop in Phase::Changing.
inline constexpr const char* kFinishing =
    "finishing first, so that the hub is not left half-way; a second signal stops at the next "
    "request";

} // namespace vornadel
