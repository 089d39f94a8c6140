#pragma once

#include <memory>
#include <string>

namespace vornadel
{

/// While it lives, the machine stays awake.
class SleepHold
{
public:
    SleepHold() = default;
    SleepHold(const SleepHold&) = delete;
    SleepHold& operator=(const SleepHold&) = delete;
    virtual ~SleepHold() = default;
};

/// Keeps the machine awake during a flow: a hub that loses its power in the middle of an update has
/// no firmware afterwards.
class SleepInhibitor
{
public:
    SleepInhibitor() = default;
    SleepInhibitor(const SleepInhibitor&) = delete;
    SleepInhibitor& operator=(const SleepInhibitor&) = delete;
    virtual ~SleepInhibitor() = default;

    /// Forbids sleep, also that of a closed lid, and shutdown. The system may show `reason` to the
    /// user. Null if it cannot be had; `problem` then says why. Blocks for seconds at most. Any
    /// thread.
    virtual std::unique_ptr<SleepHold> hold(const std::string& reason, std::string& problem) = 0;
};

} // namespace vornadel
