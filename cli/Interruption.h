#pragma once

#include "platform/Clock.h"

#include <atomic>
#include <thread>

namespace vornadel
{

/// Turns SIGINT, SIGTERM and SIGHUP into an orderly end: the request in flight ends, no other
/// follows, no pause goes on, and the flow closes the hub. A second signal ends the process at
/// once. A signal that was ignored before is left alone.
///
/// To be made before any other thread starts, since threads inherit which signals they leave alone.
class Interruption
{
public:
    explicit Interruption(Clock& clock);
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    bool happened() const { return m_happened; }

private:
    void wait(Clock& clock);

    std::atomic<bool> m_happened = false;
    std::atomic<bool> m_ending = false;
    std::thread m_thread;
};

} // namespace vornadel
