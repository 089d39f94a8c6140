#pragma once

#include "app/AppDelegate.h"
#include "app/Controls.h"
#include "standins/sim/SimulatedBus.h"
#include "tests/app/PatientClock.h"
#include "tests/support/FakeMachine.h"
#include "tests/support/Gate.h"
#include "tests/support/TemporaryFolder.h"

#include <QColor>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class QDialog;
class QPushButton;

namespace vornadel::test
{

inline constexpr std::size_t kSwitchedCount = 10;

/// A config.ini with only the ids of the simulated hub.
std::string configText(const std::string& settings = "");

/// The whole window program on a simulated hub and a fake machine. Set what differs from the
/// defaults before launch(). The destructor ends the tool.
class ToolUnderTest : public testing::Test
{
public:
    ~ToolUnderTest() override;

protected:
    ToolUnderTest();

    void launch();
    /// The same, but waits for the end of the update at start, when the buttons are enabled.
    void launchAndSettle();
    /// Launches the tool with an image to write, and stops that update before its erase, with the
    /// hub open.
    void launchAndHold(const std::string& settings = "");
    /// The standard error output of the launch.
    std::string consoleOfLaunch();
    void end(); ///< as after the window has closed

    AppDelegate& tool() { return *m_delegate; }
    SimulatedHub& hub() { return m_bus->hub(); }
    PlaceLocks& placeLocks() { return m_bus->placeLocks(); }
    PatientClock& clock() { return *m_clock; }
    QWidget* content() const;

    std::string directory() const { return m_folder.path(); }
    std::string resources() const { return place.resourcePath; }
    /// Writes a file into the test's folder and returns its path.
    std::string writeFile(const std::string& name, const std::vector<std::uint8_t>& bytes) const
    {
        return m_folder.write(name, bytes);
    }

    std::array<QPushButton*, kSwitchedCount> switchedButtons();
    bool allSwitched(bool enabled);
    bool waitUntilEnabled();

    /// Lets the bus report a device that is no hub.
    void strangerComesOrGoes(UsbEvent event);
    std::string hubInfo();
    std::string progressText();

    std::optional<std::string> config = configText(); ///< config.ini; unset: none
    SimulatedHubOptions hubOptions;
    ToolPlace place;
    QString titleSuffix;
    FakeShell shell;
    FakeSystemVersion systemVersion;
    FakePrivilegedRun privileged;
    FakeSleepInhibitor sleep;
    FakeTaskbar taskbar;
    std::optional<Clock::Duration> heldPause; ///< of the clock
    std::atomic<int> ends = 0; ///< how often the tool has ended the process by itself
    Gate eraseGate;            ///< stops before the hub's erase
    Gate readGate;             ///< stops before a flow reads the flash

private:
    const TemporaryFolder m_folder;
    std::unique_ptr<PatientClock> m_clock; // one per launch, because an end interrupts it for good
    std::unique_ptr<SimulatedBus> m_bus;
    std::unique_ptr<Platform> m_platform;
    std::unique_ptr<AppDelegate> m_delegate;
};

/// Handles events until the condition holds, at most ten seconds; false on time-out.
bool waitFor(const std::function<bool()>& condition);

/// Handles all pending events, including those that they cause.
void settleEvents();

/// Clicks on a button that opens a dialog. `use` is called with the open dialog and must close it.
void clickAndUse(QPushButton* button, const std::function<void(QDialog&)>& use);
void runAndUse(const std::function<void()>& open, const std::function<void(QDialog&)>& use);

/// Does something that opens an alert with this text, perhaps in another dialog, and closes it.
void expectAlert(const QString& text, const std::function<void()>& action);

/// Clicks on a button that opens a file dialog, types a path there and confirms.
void chooseByTyping(QPushButton* button, const QString& path);

int hueOf(const TextView& view);

inline constexpr int kBlueHue = 240;
inline constexpr int kRedHue = 0;

} // namespace vornadel::test
