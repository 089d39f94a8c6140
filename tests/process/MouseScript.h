#pragma once

#include "app/AppDelegate.h"
#include "platform/Platform.h"
#include "standins/sim/SimulatedBus.h"
#include "tests/app/PatientClock.h"
#include "tests/support/FakeMachine.h"

#include <QObject>
#include <QPoint>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <deque>
#include <functional>
#include <memory>
#include <string>

class QComboBox;
class QWidget;

namespace vornadel::test
{

/// A user at the mouse and the keyboard of a separate X display. The events come from the X server;
/// the script only says when.
void xdotool(const QStringList& arguments);
void clickAt(const QPoint& onScreen);
void click(const QWidget* widget); ///< in its middle

/// Runs steps one after the other, each as soon as its condition is true.
class MouseScript final : public QObject
{
public:
    using Condition = std::function<bool()>;
    using Step = std::function<void()>;

    /// If the condition never becomes true, the application ends with status 1 and prints `name`.
    void when(std::string name, Condition condition, Step step);
    /// Types a path into the next file dialog and confirms.
    void answerFileDialog(const QString& path);
    /// Presses an entry of the list that opens. `combo` may be null until then.
    void chooseEntry(const std::string& name, const std::function<QComboBox*()>& combo,
                     int position);

    void start();
    bool finished() const { return m_entries.empty(); }

private:
    struct Entry {
        std::string name;
        Condition condition;
        Step step;
    };

    void poll();

    std::deque<Entry> m_entries;
    QTimer m_timer;
    int m_polls = 0;
};

/// A machine with a simulated hub and a virtual clock.
class MouseMachine
{
public:
    MouseMachine();

    /// Call it when the tool has been launched.
    void use(AppDelegate& tool) { m_clock.mainThread = &tool.mainThread(); }

    SimulatedHub& hub() { return m_bus->hub(); }
    Platform& platform() { return *m_platform; }

private:
    PatientClock m_clock;
    std::unique_ptr<SimulatedBus> m_bus;
    FakeShell m_shell;
    FakePrivilegedRun m_privileged;
    FakeSystemVersion m_version;
    std::unique_ptr<Platform> m_platform;
};

} // namespace vornadel::test
