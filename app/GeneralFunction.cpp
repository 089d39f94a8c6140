#include "app/GeneralFunction.h"

#include "app/ConsoleLog.h"
#include "platform/ShellCommand.h"

#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QStringDecoder>

#include <array>
#include <string>

namespace vornadel
{

namespace
{

/// The buffer for the log and snapshot commands. Main thread only.
std::array<char, 1024> commandBuffer;

void appendToLog(Shell& shell, const char* before, const std::string& text)
{
    const char* const command =
        formatShellCommand(commandBuffer, before, text, " >> /tmp/Vornadel.log");
    if (shell.mayAppend(kLogFile)) {
        shell.run(command);
    } else {
        ConsoleLog(QString("%1 is not a plain file of your own, so nothing is written to it")
                       .arg(kLogFile));
    }
}

} // namespace

QString GeneralFunction::GetCurrentSystemVersion(SystemVersion& system)
{
    SystemVersionNumbers version = system.read();
    if (version.error != 0) {
        ConsoleLog(QString::asprintf("Unable to obtain system version: %ld", version.error));
        version = {10, 0, 0, 0};
    }
    return QString::asprintf("%u.%u.%u", version.major, version.minor, version.bugfix);
}

QString GeneralFunction::GetDirFromPath(const QString& path)
{
    qsizetype lastSeparator = 0;
    for (qsizetype i = 0; i < path.size(); ++i) {
        if ((path.at(i).unicode() & 0xFF) == '/') {
            lastSeparator = i;
        }
    }
    return path.left(lastSeparator);
}

QString GeneralFunction::GetNameFromPath(const QString& path)
{
    qsizetype end = path.size();
    while (end > 1 && path.at(end - 1) == u'/') {
        --end;
    }
    const QString trimmed = path.left(end);
    return trimmed == u"/" ? trimmed : trimmed.mid(trimmed.lastIndexOf(u'/') + 1);
}

void GeneralFunction::AlertString(const QString& message)
{
    QMessageBox alert(QApplication::activeWindow());
    alert.setObjectName("alert");
    alert.setIcon(QMessageBox::Warning);
    alert.setTextFormat(Qt::PlainText);
    alert.setText(message);
    alert.setInformativeText(QString());
    alert.addButton("OK", QMessageBox::AcceptRole);
    alert.exec();
}

void GeneralFunction::PrintNormalLog(Shell& shell, const QString& text)
{
    appendToLog(shell, "echo ", text.toStdString());
}

void LogShellOutput(Shell& shell, const char* command) { appendToLog(shell, "", command); }

void RunBufferedCommand(Shell& shell, const char* command)
{
    shell.runQuietly(formatShellCommand(commandBuffer, "", command, ""));
}

QString GeneralFunction::GetStringFromFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return QLatin1String("");
    }
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(file.readAll());
    return decoder.hasError() ? QString() : text;
}

} // namespace vornadel
