#pragma once

#include "app/AppDelegate.h"
#include "app/Controls.h"
#include "standins/sim/SimulatedBus.h"
#include "tests/app/PatientClock.h"
#include "tests/support/FakeMachine.h"
#include "tests/support/Gate.h"

#include <QColor>
#include <QTemporaryDir>
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

/// A file with supported ids for the simulated hub and nothing else.
std::string configText(const std::string& settings = "");

/// The whole window program over a simulated hub and a machine that only pretends. What is to
/// differ from the defaults is set before launch(). Ends the tool when it goes.
class ToolUnderTest : public testing::Test
{
public:
    ~ToolUnderTest() override;

protected:
    ToolUnderTest();

    void launch();
    /// The same, and returns only when the run at the start has ended: the buttons are enabled.
    void launchAndSettle();
    /// What the launch wrote to standard error.
    std::string consoleOfLaunch();
    void end(); ///< as when the window has closed

    AppDelegate& tool() { return *m_delegate; }
    SimulatedHub& hub() { return m_bus->hub(); }
    PatientClock& clock() { return *m_clock; }
    QWidget* content() const;
    std::array<TitledBox*, 6> boxes();
    std::array<TextView*, 4> textViews();

    std::string directory() const { return m_directory.path().toStdString(); }
    std::string resources() const { return place.resourcePath; }
    /// Writes a file into the test's own directory; the result is its path.
    std::string writeFile(const std::string& name, const std::vector<std::uint8_t>& bytes) const;

    std::array<QPushButton*, kSwitchedCount> switchedButtons();
    bool allSwitched(bool enabled);
    bool waitUntilEnabled();

    /// Lets the bus report a device that is no hub.
    void strangerComesOrGoes(UsbEvent event);
    std::string hubInfo();
    std::string progressText();

    std::optional<std::string> config = configText(); ///< config.ini; nothing: there is none
    SimulatedHubOptions hubOptions;
    ToolPlace place;
    QString titleSuffix;
    FakeShell shell;
    FakeSystemVersion systemVersion;
    FakePrivilegedRun privileged;
    std::optional<Clock::Duration> heldPause; ///< of the clock
    std::atomic<int> ends = 0; ///< how often the tool has ended the process by itself
    Gate eraseGate;            ///< stands before the hub's erase
    Gate readGate;             ///< stands before a flow's read of the flash

private:
    QTemporaryDir m_directory;
    std::unique_ptr<PatientClock> m_clock; // one per launch: an end interrupts it for good
    std::unique_ptr<SimulatedBus> m_bus;
    std::unique_ptr<Platform> m_platform;
    std::unique_ptr<AppDelegate> m_delegate;
};

/// Keeps the events going until the condition holds; false when ten seconds were not enough.
bool waitFor(const std::function<bool()>& condition);

/// Runs the events that are waiting, and what they bring along.
void settleEvents();

/// Clicks on a button that opens a dialog. `use` gets the dialog when it is up and has to end it.
void clickAndUse(QPushButton* button, const std::function<void(QDialog&)>& use);
void runAndUse(const std::function<void()>& open, const std::function<void(QDialog&)>& use);

/// Does something that brings an alert with this text out of another dialog, and closes the alert.
void expectAlertWithin(const QString& text, const std::function<void()>& action);

/// Clicks on a button that opens a file dialog, types a path there and confirms.
void chooseByTyping(QPushButton* button, const QString& path);

/// How well a text of a view can be read where it stands, 1 to 21.
double contrastOf(const TextView& view);
int hueOf(const TextView& view);

inline constexpr int kBlueHue = 240;
inline constexpr int kRedHue = 0;

} // namespace vornadel::test
