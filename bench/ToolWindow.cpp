#include "bench/ToolWindow.h"

#include "hub/HubTransport.h"

#include <QApplication>
#include <QEventLoop>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QTimerEvent>

#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace vornadel::bench
{

namespace
{

/// Chooses a file in the next dialog that opens.
class FileChooser final : public QObject
{
public:
    explicit FileChooser(QString path) : m_path(std::move(path)) { startTimer(0); }

protected:
    void timerEvent(QTimerEvent* event) override
    {
        killTimer(event->timerId());
        auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr) {
            giveUp("no file dialog came up");
        }
        dialog->selectFile(m_path);
        dialog->findChild<QLineEdit*>()->setText(m_path);
        static_cast<QDialog*>(dialog)->done(QDialog::Accepted);
    }

private:
    QString m_path;
};

} // namespace

void giveUp(const std::string& why)
{
    std::printf("given up: %s\n", why.c_str());
    std::exit(EXIT_FAILURE);
}

void prepareForWindows()
{
    // The console log reports every detection and would garble the tables.
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDERR_FILENO);
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    ::setenv("XDG_CONFIG_HOME", "/dev/null", 1); // no settings of the user
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication::setQuitOnLastWindowClosed(false);
}

void beQuiet(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, SLOT(quit()));
    loop.exec();
}

ToolWindow::ToolWindow(const std::string& bundle, Clock& flowClock, Clock& hubClock,
                       SimulatedLatency latency)
{
    SimulatedHubOptions options;
    options.latency = latency;
    options.keepInMemory = true;
    std::string error;
    m_bus = SimulatedBus::create(options, hubClock, error);
    if (!m_bus) {
        giveUp(error);
    }
    m_platform =
        std::make_unique<Platform>(Platform{*m_bus, m_shell, m_privileged, m_version, flowClock});
    Hub_UsePlatform(*m_bus, flowClock);
    m_delegate = std::make_unique<AppDelegate>(
        *m_platform, ToolPlace{bundle, true, VORNADEL_RESOURCES}, QString());
    m_delegate->applicationDidFinishLaunching();
    beQuiet(5 * kQuietMilliseconds); // the update at start finds no image and ends
}

ToolWindow::~ToolWindow()
{
    if (!m_delegate->shutDown()) {
        giveUp("a flow did not end");
    }
}

QString ToolWindow::choose(QPushButton& button, const std::vector<std::uint8_t>& content)
{
    QString path = m_folder.filePath("image.bin");
    QFile file(path);
    const auto size = static_cast<qint64>(content.size());
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(reinterpret_cast<const char*>(content.data()), size) != size) {
        giveUp("no image could be written");
    }
    file.close();
    const FileChooser chooser(path);
    button.click();
    return path;
}

} // namespace vornadel::bench
