// A plug-in that Qt loads into the window program if QT_QPA_GENERIC_PLUGINS names it. It prints
// what the window shows to standard output, and executes commands from standard input. The program
// itself is the real one.
//
// It prints each change, with "|" for a line end in the window:
//   hub: TEXT       the line about the hub, with its colour before it
//   flow: TEXT      the progress text of the flow so far, with its colour before it
//   buttons: on     or off: an operation can be started
//   dialog: NAME    class of the dialog that is open, or "none"
// Commands, one per line:
//   press NAME      presses a button, named like its member in WindowControls
//   choose PATH     answers the file dialog that is open
//   confirm         presses the button of the alert that is open
//   where NAME      answers "at NAME: X Y", the middle of the control on the screen
//   close           closes the window

#include "tests/kernel/WindowRemote.h"

#include <QApplication>
#include <QFileDialog>
#include <QHash>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSocketNotifier>
#include <QTimer>

#include <array>
#include <cstdio>
#include <unistd.h>

namespace vornadel::test
{

namespace
{

constexpr int kLookMilliseconds = 50;

template <typename Widget>
Widget* control(const QString& name)
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* const found = window->findChild<Widget*>(name)) {
            return found;
        }
    }
    return nullptr;
}

template <typename Dialog>
Dialog* openDialog()
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* const dialog = qobject_cast<Dialog*>(window);
            dialog != nullptr && dialog->isVisible()) {
            return dialog;
        }
    }
    return nullptr;
}

QString colourOf(const QPlainTextEdit& text)
{
    const QColor colour = text.palette().color(QPalette::Text);
    if (colour.red() > colour.blue()) {
        return "red ";
    }
    return colour.blue() > colour.red() ? "blue " : "";
}

QString shownIn(const QString& name)
{
    const auto* const text = control<QPlainTextEdit>(name);
    return text == nullptr ? QString() : colourOf(*text) + text->toPlainText().replace('\n', '|');
}

void answer(const QString& line)
{
    std::fputs(qUtf8Printable(line + '\n'), stdout);
    std::fflush(stdout);
}

void press(const QString& name)
{
    if (auto* const button = control<QPushButton>(name)) {
        button->click(); // returns only after the dialog that it opens has closed
    }
}

void choose(const QString& path)
{
    if (auto* const dialog = openDialog<QFileDialog>()) {
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText(path);
        QMetaObject::invokeMethod(dialog, "accept", Qt::DirectConnection);
    }
}

void confirm(const QString& /*argument*/)
{
    if (auto* const alert = openDialog<QMessageBox>()) {
        alert->accept();
    }
}

void tellWhere(const QString& name)
{
    if (const auto* const widget = control<QWidget>(name)) {
        const QPoint middle = widget->mapToGlobal(widget->rect().center());
        answer(QString("at %1: %2 %3").arg(name).arg(middle.x()).arg(middle.y()));
    }
}

void closeWindow(const QString& /*argument*/) { QApplication::closeAllWindows(); }

struct Command {
    const char* name;
    void (*perform)(const QString& argument);
};
constexpr std::array<Command, 5> kCommands = {{
    {"press", press},
    {"choose", choose},
    {"confirm", confirm},
    {"where", tellWhere},
    {"close", closeWindow},
}};

/// Watches the window and standard input, on the main thread.
class WindowRemote final : public QObject
{
public:
    WindowRemote()
    {
        connect(&m_timer, &QTimer::timeout, this, [this] { look(); });
        m_timer.start(kLookMilliseconds);
        connect(&m_input, &QSocketNotifier::activated, this, [this] { listen(); });
    }

private:
    void look()
    {
        tell("hub", shownIn("nstfHubInfo_UpdateFW"));
        tell("flow", shownIn("nstfUpdateInfo_UpdateFW"));
        if (const auto* const button = control<QPushButton>("btnUpdate_EasyUpdate")) {
            tell("buttons", button->isEnabled() ? "on" : "off");
        }
        const QWidget* const dialog = QApplication::activeModalWidget();
        tell("dialog", dialog == nullptr ? "none" : dialog->metaObject()->className());
    }

    void tell(const QString& what, const QString& text)
    {
        QString& told = m_told[what];
        if (told != text) {
            told = text;
            answer(what + ": " + text);
        }
    }

    void listen()
    {
        std::array<char, 1024> bytes{};
        const ssize_t count = read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count <= 0) {
            m_input.setEnabled(false);
            return;
        }
        m_line.append(bytes.data(), static_cast<qsizetype>(count));
        for (qsizetype end = m_line.indexOf('\n'); end >= 0; end = m_line.indexOf('\n')) {
            const QString line = QString::fromUtf8(m_line.left(end));
            m_line.remove(0, end + 1);
            // Queued, because a dialog's event loop inside the notifier would block it.
            QMetaObject::invokeMethod(
                this, [line] { obey(line); }, Qt::QueuedConnection);
        }
    }

    static void obey(const QString& line)
    {
        for (const Command& command : kCommands) {
            if (line.section(' ', 0, 0) == command.name) {
                command.perform(line.section(' ', 1));
                return;
            }
        }
        answer("error: " + line);
    }

    QTimer m_timer;
    QSocketNotifier m_input{STDIN_FILENO, QSocketNotifier::Read};
    QByteArray m_line;
    QHash<QString, QString> m_told;
};

} // namespace

QObject* WindowRemotePlugin::create(const QString& name, const QString& /*argument*/)
{
    return name == "windowremote" ? new WindowRemote : nullptr;
}

} // namespace vornadel::test
