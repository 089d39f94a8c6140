// The window program on a simulated hub. It chooses an image and presses "Update", or presses a
// button of the flash page, and closes its own window at a moment given on the command line. Only
// requests and pauses of a flow count, not those of the detection.
//
//   close_probe FLASH IMAGE MOMENT N
//
//   request    while the N-th request after the press is in flight
//   stuck      the same, and that request never ends
//   pause      while the flow sleeps for the N-th time after the press
//   start-up   while the N-th request of the start-up run is in flight
//   farewell   in the five seconds after the success of the start-up run
//   unattended never; the start-up run ends the program
//   read       while the N-th request of a flash read is in flight
//   erase      while the N-th request of a flash erase is in flight
//   unload     while the N-th request after an unload of the driver is in flight
//   away       while the hub restarts for the N-th time after an unload of the driver
//   panel      while the flash page asks where to save
//   alert      while the flash page says that there is nothing to save
//   dialog     right after the image has been chosen
//   launch     as soon as the window is there, while the start-up run goes on
//   end        after the last line
//   loss       from a button's slot that loses a kilobyte

#include "app/AppDelegate.h"
#include "app/Controls.h"
#include "app/Tool.h"
#include "standins/sim/SimulatedBus.h"
#include "tests/app/PatientClock.h"
#include "tests/support/FakeMachine.h"
#include "tests/support/Gate.h"

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

namespace
{

using namespace vornadel;

/// The moment from the command line, and the means to hold a worker until the window has been
/// closed.
class Moment
{
public:
    Moment(std::string kind, unsigned number) : m_kind(std::move(kind)), m_number(number)
    {
        m_closed.shut();
    }

    bool is(const std::string& kind) const { return m_kind == kind; }

    /// True once: at the N-th call for this kind since arm().
    bool reached(const std::string& kind)
    {
        return m_armed && m_kind == kind && QThread::currentThread() != qApp->thread() &&
               ++m_count == m_number;
    }

    void arm() { m_armed = true; }

    static void close()
    {
        QMetaObject::invokeMethod(
            qApp, [] { qApp->closeAllWindows(); }, Qt::QueuedConnection);
    }

    /// Closes the window and returns when that has happened, or never.
    void closeAndWait()
    {
        close();
        m_closed.pass();
    }

    void windowHasClosed()
    {
        if (m_kind != "stuck") {
            m_closed.open();
        }
    }

private:
    const std::string m_kind;
    const unsigned m_number;
    std::atomic<bool> m_armed = false;
    std::atomic<unsigned> m_count = 0;
    test::Gate m_closed;
};

/// No pause takes time, except the one in which the window closes: it lasts until it is
/// interrupted.
class ProbeClock final : public test::PatientClock
{
public:
    explicit ProbeClock(Moment& moment) : m_moment(moment) { gate.shut(); }

    void sleep(Duration pause) override
    {
        if (m_moment.reached("pause") || m_moment.reached("away") ||
            (pause == std::chrono::seconds(5) && m_moment.reached("farewell"))) {
            Moment::close();
            gate.pass();
        }
        PatientClock::sleep(pause);
    }

private:
    Moment& m_moment;
};

void chooseInDialog(const QString& image)
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<QFileDialog*>(widget);
            dialog != nullptr && dialog->isVisible()) {
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText(image);
            QMetaObject::invokeMethod(dialog, "accept", Qt::DirectConnection);
            return;
        }
    }
    QTimer::singleShot(1, qApp, [image] { chooseInDialog(image); });
}

/// Calls `then` when the buttons are enabled.
void whenIdle(AppDelegate& delegate, const std::function<void()>& then)
{
    if (delegate.btnUpdate_EasyUpdate->isEnabled()) {
        then();
        return;
    }
    QTimer::singleShot(1, &delegate, [&delegate, then] { whenIdle(delegate, then); });
}

/// Closes the window when a modal dialog is open.
void closeBehindADialog(AppDelegate& delegate)
{
    if (QApplication::activeModalWidget() != nullptr) {
        delegate.window()->close();
        return;
    }
    QTimer::singleShot(1, &delegate, [&delegate] { closeBehindADialog(delegate); });
}

/// Whether the moment is one of a button without a file.
bool pressOneButton(AppDelegate& delegate, Moment& moment)
{
    if (moment.is("read") || moment.is("erase")) {
        moment.arm();
        (moment.is("read") ? delegate.btnRead_FwFlash : delegate.btnErase_FwFlash)->click();
        return true;
    }
    if (moment.is("unload") || moment.is("away")) {
        moment.arm();
        delegate.nsbtnUnloadDriver_HelpBox->click();
        return true;
    }
    if (moment.is("alert")) {
        closeBehindADialog(delegate);
        delegate.btnSave_FwFlash->click();
        return true;
    }
    if (moment.is("panel")) {
        delegate.btnRead_FwFlash->click();
        whenIdle(delegate, [&delegate] {
            closeBehindADialog(delegate);
            delegate.btnSave_FwFlash->click();
        });
        return true;
    }
    return false;
}

/// Must not be optimised away.
char* volatile lost = nullptr;

void use(AppDelegate& delegate, Moment& moment, const QString& image)
{
    if (moment.is("launch")) {
        QTimer::singleShot(0, &delegate, [&delegate] { delegate.window()->close(); });
        return;
    }
    if (moment.is("start-up") || moment.is("farewell") || moment.is("unattended")) {
        return;
    }
    if (moment.is("loss")) {
        QObject::connect(delegate.btnRead_FwFlash, &QPushButton::pressed, &delegate, [&delegate] {
            lost = new char[1024];
            lost = nullptr;
            delegate.window()->close();
        });
        whenIdle(delegate, [&delegate] { delegate.btnRead_FwFlash->click(); });
        return;
    }
    whenIdle(delegate, [&delegate, &moment, image] {
        if (pressOneButton(delegate, moment)) {
            return;
        }
        QTimer::singleShot(0, qApp, [image] { chooseInDialog(image); });
        delegate.btnSelect_EasyUpdate->click();
        if (moment.is("dialog")) {
            delegate.window()->close();
            return;
        }
        moment.arm();
        delegate.btnUpdate_EasyUpdate->click();
        if (moment.is("end")) {
            whenIdle(delegate, [&delegate] { delegate.window()->close(); });
        }
    });
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5) {
        return 64;
    }
    qputenv("XDG_CONFIG_HOME", "/dev/null"); // no settings of the user
    const QString image = QString::fromLocal8Bit(argv[2]);
    Moment moment(argv[3], static_cast<unsigned>(std::atoi(argv[4])));
    const QApplication application(argc, argv);
    QObject::connect(&application, &QApplication::lastWindowClosed,
                     [&] { moment.windowHasClosed(); });

    if (moment.is("start-up") || moment.is("farewell")) {
        moment.arm();
    }

    ProbeClock clock(moment);
    std::string error;
    const auto bus =
        SimulatedBus::create(std::string("latency=none,image=") + argv[1], clock, error);
    if (!bus) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 65;
    }
    bus->hub().onRequest = [&](const ControlRequest&) {
        for (const char* kind : {"request", "start-up", "read", "erase", "unload", "stuck"}) {
            if (moment.reached(kind)) {
                moment.closeAndWait();
            }
        }
    };
    test::FakeShell shell;
    test::FakePrivilegedRun privileged;
    test::FakeSystemVersion version;
    Platform platform{*bus, shell, privileged, version, clock};
    const int status = runTool(platform, toolPlaceOf(std::filesystem::canonical(argv[0])), {},
                               [&](AppDelegate& delegate) {
                                   clock.mainThread = &delegate.mainThread();
                                   use(delegate, moment, image);
                               });
    return moment.is("unattended") ? 66 : status; // something else has ended it
}
