#pragma once

#include "platform/PrivilegedRun.h"
#include "platform/Shell.h"
#include "platform/SleepInhibitor.h"
#include "platform/SystemVersion.h"
#include "platform/Taskbar.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vornadel::test
{

/// Records the commands and runs nothing.
class FakeShell final : public Shell
{
public:
    int run(const std::string& command) override
    {
        commands.push_back(command);
        if (onRun) {
            onRun();
        }
        return 0;
    }

    int runQuietly(const std::string& command) override
    {
        quiet.push_back(command);
        return run(command);
    }

    bool exists(const std::string& path) override { return isIn(existing, path); }
    bool mayAppend(const std::string& path) override { return !isIn(foreign, path); }
    bool mayRead(const std::string& path) override { return !isIn(foreign, path); }

    std::vector<std::string> commands; ///< in order
    std::vector<std::string> quiet;    ///< those that were run quietly
    std::function<void()> onRun;
    std::vector<std::string> existing; ///< the paths for which exists() is true
    std::vector<std::string> foreign;  ///< the files that another user made

private:
    static bool isIn(const std::vector<std::string>& paths, const std::string& path)
    {
        return std::find(paths.begin(), paths.end(), path) != paths.end();
    }
};

/// A system with a configurable version.
class FakeSystemVersion final : public SystemVersion
{
public:
    SystemVersionNumbers read() override { return numbers; }

    SystemVersionNumbers numbers{12, 4, 0, 0};
};

/// A hold that is counted while it lives.
template <typename Hold>
class CountedHold final : public Hold
{
public:
    explicit CountedHold(std::atomic<int>& holds) : m_holds(holds) { ++m_holds; }
    ~CountedHold() override { --m_holds; }

private:
    std::atomic<int>& m_holds;
};

/// Records the scripts and starts nothing.
class FakePrivilegedRun final : public PrivilegedRun
{
public:
    bool start(const std::string& script) override
    {
        scripts.push_back(script);
        if (onStart) {
            onStart();
        }
        return able;
    }

    std::optional<int> wait() override { return status; }

    std::unique_ptr<HubHold> holdHub() override
    {
        return scriptAtWork ? nullptr : std::make_unique<Hold>(holds);
    }

    std::vector<std::string> scripts;
    std::function<void()> onStart;
    std::optional<int> status = 0; ///< of every script, for wait()
    bool able = true;              ///< whether this machine can ask for administrator rights
    bool scriptAtWork = false;     ///< whether a script is withdrawing access right now
    std::atomic<int> holds{0};     ///< the number of holds on the hub

private:
    using Hold = CountedHold<HubHold>;
};

/// A system that can be kept awake, or cannot.
class FakeSleepInhibitor final : public SleepInhibitor
{
public:
    std::unique_ptr<SleepHold> hold(const std::string& /*reason*/, std::string& why) override
    {
        why = problem;
        return problem.empty() ? std::make_unique<CountedHold<SleepHold>>(holds) : nullptr;
    }

    std::string problem;       ///< why it cannot; empty: it can
    std::atomic<int> holds{0}; ///< those that keep it awake
};

/// A taskbar that records, or cannot be reached.
class FakeTaskbar final : public Taskbar
{
public:
    std::unique_ptr<TaskbarProgress> begin(std::string& why) override
    {
        ++begins;
        shown.clear();
        why = problem;
        return problem.empty() ? std::make_unique<Progress>(*this) : nullptr;
    }

    std::string problem; ///< why it cannot be reached; empty: it can
    std::atomic<int> begins{0};
    std::vector<int> shown; ///< by the last flow: percents in order; -1: no more

private:
    class Progress final : public TaskbarProgress
    {
    public:
        explicit Progress(FakeTaskbar& taskbar) : m_taskbar(taskbar) {}
        ~Progress() override { m_taskbar.shown.push_back(-1); }
        void show(double part) override
        {
            m_taskbar.shown.push_back(static_cast<int>(std::lround(part * 100)));
        }

    private:
        FakeTaskbar& m_taskbar;
    };
};

} // namespace vornadel::test
