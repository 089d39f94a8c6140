#include "tests/process/MouseScript.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLineEdit>
#include <QProcess>
#include <QWidget>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace vornadel::test
{

namespace
{

constexpr int kPollMilliseconds = 20;
constexpr int kPatienceMilliseconds = 30000; ///< for one step, even on a busy machine
constexpr int kPollsBeforeTypingAgain = 5000 / kPollMilliseconds;

/// The dialog with the keyboard focus; a completer's list may be the active window for a moment.
QFileDialog* openDialog()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<QFileDialog*>(widget);
            dialog != nullptr && dialog->isActiveWindow()) {
            return dialog;
        }
    }
    return nullptr;
}

QLineEdit* nameIn(const QFileDialog* dialog)
{
    return dialog->findChild<QLineEdit*>("fileNameEdit");
}

void typeOver(const QString& text) { xdotool({"key", "ctrl+a", "type", "--delay", "5", text}); }

} // namespace

void xdotool(const QStringList& arguments) { QProcess::startDetached("xdotool", arguments); }

void clickAt(const QPoint& onScreen)
{
    xdotool(
        {"mousemove", QString::number(onScreen.x()), QString::number(onScreen.y()), "click", "1"});
}

void click(const QWidget* widget) { clickAt(widget->mapToGlobal(widget->rect().center())); }

void MouseScript::when(std::string name, Condition condition, Step step)
{
    m_entries.push_back({std::move(name), std::move(condition), std::move(step)});
}

void MouseScript::answerFileDialog(const QString& path)
{
    when(
        "the file dialog", [] { return openDialog() != nullptr; },
        [path] {
            // Qt's completer reads the folders in the path, and its list takes the keyboard focus.
            // With a large folder and a busy machine it swallows keys typed meanwhile.
            nameIn(openDialog())->setCompleter(nullptr);
            typeOver(path);
        });
    when(
        "the path in the dialog",
        [path, polls = 0]() mutable {
            const QFileDialog* dialog = openDialog();
            if (dialog == nullptr) {
                return false;
            }
            const QString typed = nameIn(dialog)->text();
            // Types again if keys were lost, as a user would.
            if (typed != path && ++polls % kPollsBeforeTypingAgain == 0) {
                std::fprintf(stderr, "typed again, for the dialog has: %s\n",
                             qUtf8Printable(typed));
                typeOver(path);
            }
            return typed == path;
        },
        [] {
            xdotool({"key", "Return"});
        });
    when(
        "the file dialog to close", [] { return openDialog() == nullptr; }, [] {});
}

void MouseScript::chooseEntry(const std::string& name, const std::function<QComboBox*()>& combo,
                              int position)
{
    const auto open = std::make_shared<QElapsedTimer>();
    when(
        name,
        [combo, open] {
            const QComboBox* const box = combo();
            if (box == nullptr || !box->view()->isVisible()) {
                return false;
            }
            if (!open->isValid()) {
                open->start();
            }
            // Any sooner, and the list takes it for the second click of a double click.
            return open->hasExpired(QApplication::doubleClickInterval());
        },
        [combo, position] {
            const QAbstractItemView& view = *combo()->view();
            clickAt(view.viewport()->mapToGlobal(
                view.visualRect(view.model()->index(position, 0)).center()));
        });
}

void MouseScript::start()
{
    QObject::connect(&m_timer, &QTimer::timeout, this, [this] { poll(); });
    m_timer.start(kPollMilliseconds);
}

void MouseScript::poll()
{
    if (m_entries.empty()) {
        return;
    }
    if (m_entries.front().condition()) {
        const Step step = std::move(m_entries.front().step);
        m_entries.pop_front();
        m_polls = 0;
        step();
        return;
    }
    if (++m_polls > kPatienceMilliseconds / kPollMilliseconds) {
        std::fprintf(stderr, "waited in vain: %s\n", m_entries.front().name.c_str());
        QApplication::exit(1);
    }
}

MouseMachine::MouseMachine()
{
    SimulatedHubOptions options;
    options.keepInMemory = true;
    options.latency = SimulatedLatency::None;
    std::string error;
    m_bus = SimulatedBus::create(options, m_clock, error);
    if (!m_bus) {
        std::fprintf(stderr, "%s\n", error.c_str());
        std::exit(1);
    }
    m_platform =
        std::make_unique<Platform>(Platform{*m_bus, m_shell, m_privileged, m_version, m_clock});
}

} // namespace vornadel::test
