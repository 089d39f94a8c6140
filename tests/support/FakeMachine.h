#pragma once

#include "platform/PrivilegedRun.h"
#include "platform/Shell.h"
#include "platform/SystemVersion.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
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

    std::unique_ptr<HubHold> holdHub() override
    {
        return scriptAtWork ? nullptr : std::make_unique<Hold>(holds);
    }

    std::vector<std::string> scripts;
    std::function<void()> onStart;
    bool able = true;          ///< whether this machine can ask for administrator rights
    bool scriptAtWork = false; ///< whether a script is withdrawing access right now
    std::atomic<int> holds{0}; ///< the number of holds on the hub

private:
    class Hold final : public HubHold
    {
    public:
        explicit Hold(std::atomic<int>& holds) : m_holds(holds) { ++m_holds; }
        ~Hold() override { --m_holds; }

    private:
        std::atomic<int>& m_holds;
    };
};

} // namespace vornadel::test
