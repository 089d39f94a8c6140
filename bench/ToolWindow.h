#pragma once

#include "app/AppDelegate.h"
#include "platform/Clock.h"
#include "standins/sim/SimulatedBus.h"
#include "tests/support/FakeMachine.h"

#include <QTemporaryDir>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QPushButton;

namespace vornadel::bench
{

using Milliseconds = std::chrono::duration<double, std::milli>;

/// Ends the benchmark, because what it measures did not happen.
[[noreturn]] void giveUp(const std::string& why);

/// Prepares a QApplication for a benchmark: no screen, no console log, no native dialogs.
void prepareForWindows();

/// Handles events for that long.
void beQuiet(int milliseconds);

/// The tool's window on a simulated hub, launched and idle.
class ToolWindow
{
public:
    static constexpr int kQuietMilliseconds = 20; ///< for the detection after a flow

    /// The hub uses `hubClock`, the tool `flowClock`; both may be one. `bundle` need not exist.
    ToolWindow(const std::string& bundle, Clock& flowClock, Clock& hubClock,
               SimulatedLatency latency);
    ToolWindow(const ToolWindow&) = delete;
    ToolWindow& operator=(const ToolWindow&) = delete;
    ~ToolWindow();

    AppDelegate& tool() { return *m_delegate; }
    SimulatedHub& hub() { return m_bus->hub(); }

    /// Presses a button and chooses a file with that content in the dialog that opens. Returns the
    /// path of the file.
    QString choose(QPushButton& button, const std::vector<std::uint8_t>& content);

private:
    test::FakeShell m_shell;
    test::FakePrivilegedRun m_privileged;
    test::FakeSystemVersion m_version;
    QTemporaryDir m_folder;
    std::unique_ptr<SimulatedBus> m_bus;
    std::unique_ptr<Platform> m_platform;
    std::unique_ptr<AppDelegate> m_delegate;
};

} // namespace vornadel::bench
