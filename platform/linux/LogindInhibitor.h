#pragma once

#include "platform/SleepInhibitor.h"

#include <chrono>

namespace vornadel
{

/// Asks logind over the system's D-Bus.
class LogindInhibitor final : public SleepInhibitor
{
public:
    /// `limit`: how long to wait for the answer.
    explicit LogindInhibitor(std::chrono::milliseconds limit = std::chrono::seconds(2))
        : m_limit(limit)
    {
    }

    std::unique_ptr<SleepHold> hold(const std::string& reason, std::string& problem) override;

private:
    std::chrono::milliseconds m_limit;
};

} // namespace vornadel
