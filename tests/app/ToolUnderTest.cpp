#include "tests/app/ToolUnderTest.h"

#include "hub/HubTransport.h"
#include "standins/sim/DemoImage.h"
#include "tests/support/HubGuard.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDialog>
#include <QEventLoop>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace vornadel::test
{

namespace
{

constexpr int kPatienceMs = 10000; // for sanitizers and a loaded machine
constexpr std::uint8_t kEraseRequest = 0xE8;
constexpr std::uint8_t kReadRequest = 0xD8;

} // namespace

std::string configText(const std::string& settings)
{
    return "[DumpTool Config]\n" + settings +
           "[Support Vid Pid]\nVID_00 = 0x1209\nSSPID_00 = 0x0001\nHSPID_00 = 0x0002\n";
}

ToolUnderTest::ToolUnderTest()
{
    hubOptions.keepInMemory = true;
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(directory() + "/settings"));
    const std::string bundle = directory() + "/Vornadel.app";
    place = {bundle, true, bundle + "/Contents/Resources"};
    shell.existing = {"/tmp/nvram_setting.dat"};
}

ToolUnderTest::~ToolUnderTest() { end(); }

void ToolUnderTest::launch()
{
    std::filesystem::create_directories(resources());
    if (config) {
        std::ofstream(resources() + "/config.ini") << *config;
    }
    std::string error;
    m_clock = std::make_unique<PatientClock>();
    m_clock->heldPause = heldPause;
    if (heldPause) {
        m_clock->gate.shut();
    }
    m_bus = SimulatedBus::create(hubOptions, *m_clock, error);
    ASSERT_NE(m_bus, nullptr) << error;
    hub().onRequest = [this](const ControlRequest& request) {
        if (request.bRequest == kEraseRequest) {
            eraseGate.pass();
        }
        if (request.bRequest == kReadRequest && QThread::currentThread() != qApp->thread()) {
            readGate.pass();
        }
    };
    m_platform = std::make_unique<Platform>(
        Platform{*m_bus, shell, privileged, systemVersion, *m_clock, &sleep, &taskbar});
    Hub_UsePlatform(*m_bus, *m_clock);
    m_delegate = std::make_unique<AppDelegate>(*m_platform, place, titleSuffix);
    m_clock->mainThread = &m_delegate->mainThread();
    m_delegate->endProcess = [this](int status) {
        EXPECT_EQ(status, 0);
        ++ends;
    };
    // A flow's pauses let the virtual clock run on during a detection, which seems to take as long.
    m_delegate->detectionPace().restAtMost(Clock::Duration::zero());
    m_delegate->applicationDidFinishLaunching();
}

void ToolUnderTest::launchAndSettle()
{
    launch();
    ASSERT_TRUE(waitFor([this] { return progressText().find("Update FW ") != std::string::npos; }));
    ASSERT_TRUE(waitUntilEnabled());
    settleEvents();
}

void ToolUnderTest::launchAndHold(const std::string& settings)
{
    eraseGate.shut();
    writeFile("Vornadel.app/Contents/Resources/demo.bin", demoImage(kDemoVersion101));
    config = configText(settings + "FwBin = demo.bin\n");
    launch();
    ASSERT_TRUE(waitFor([this] { return eraseGate.isReached(); }));
    settleEvents();
}

std::string ToolUnderTest::consoleOfLaunch()
{
    testing::internal::CaptureStderr();
    launch();
    return testing::internal::GetCapturedStderr();
}

void ToolUnderTest::end()
{
    eraseGate.open();
    readGate.open();
    if (m_delegate) {
        EXPECT_TRUE(m_delegate->shutDown());
        m_delegate.reset();
        if (hubIsClosed()) {
            m_bus.reset();
        } else {
            hub().onRequest = nullptr;
            m_clock->mainThread = nullptr;
            static_cast<void>(m_bus.release());
            static_cast<void>(m_clock.release());
        }
    }
    settleEvents();
}

QWidget* ToolUnderTest::content() const
{
    return qobject_cast<QScrollArea*>(m_delegate->window())->widget();
}

std::array<QPushButton*, kSwitchedCount> ToolUnderTest::switchedButtons()
{
    AppDelegate& it = tool();
    return {it.nsbtnSelect_Scalar,   it.btnLoad_FwFlash,         it.btnSave_FwFlash,
            it.btnSelect_EasyUpdate, it.nsbtnLoadDriver_HelpBox, it.nsbtnUnloadDriver_HelpBox,
            it.btnRead_FwFlash,      it.btnErase_FwFlash,        it.btnUpdate_EasyUpdate,
            it.nsbtnUpdate_Scalar};
}

bool ToolUnderTest::allSwitched(bool enabled)
{
    const auto buttons = switchedButtons();
    return std::all_of(buttons.begin(), buttons.end(), [enabled](const QPushButton* button) {
        return button->isEnabled() == enabled;
    });
}

bool ToolUnderTest::waitUntilEnabled()
{
    return waitFor([this] { return allSwitched(true); });
}

void ToolUnderTest::strangerComesOrGoes(UsbEvent event)
{
    hub().notifier().push(event);
    hub().notifier().deliver();
}

std::string ToolUnderTest::hubInfo()
{
    return tool().nstfHubInfo_UpdateFW->toPlainText().toStdString();
}

std::string ToolUnderTest::progressText()
{
    return tool().nstfUpdateInfo_UpdateFW->toPlainText().toStdString();
}

bool waitFor(const std::function<bool()>& condition)
{
    const QDeadlineTimer deadline(kPatienceMs);
    QTimer look; // polls for changes without an event
    look.start(5);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void settleEvents()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

void runAndUse(const std::function<void()>& open, const std::function<void(QDialog&)>& use)
{
    bool used = false;
    QTimer look; // runs inside the dialog's own event loop
    QObject::connect(&look, &QTimer::timeout, &look, [&] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!used && dialog != nullptr && dialog->isVisible()) {
            used = true;
            use(*dialog);
        }
    });
    QTimer giveUp;
    giveUp.setSingleShot(true);
    QObject::connect(&giveUp, &QTimer::timeout, &giveUp, [] {
        ADD_FAILURE() << "the dialog stays";
        while (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
            dialog->reject();
        }
    });
    look.start(1);
    giveUp.start(kPatienceMs);
    open();
    // The sheet opens after the click, and disappears after it has been closed.
    EXPECT_TRUE(waitFor([&used] { return used && QApplication::activeModalWidget() == nullptr; }));
    EXPECT_TRUE(used) << "no dialog came";
}

void clickAndUse(QPushButton* button, const std::function<void(QDialog&)>& use)
{
    runAndUse([button] { QTest::mouseClick(button, Qt::LeftButton); }, use);
}

void expectAlert(const QString& text, const std::function<void()>& action)
{
    int alerts = 0;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &look, [&] {
        auto* alert = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (alert != nullptr && alert->isVisible()) {
            ++alerts;
            EXPECT_EQ(alert->text(), text);
            EXPECT_EQ(alert->informativeText(), "");
            ASSERT_EQ(alert->buttons().size(), 1);
            EXPECT_EQ(alert->buttons().front()->text(), "OK");
            QTest::keyClick(alert, Qt::Key_Return);
        }
    });
    look.start(1);
    action();
    EXPECT_EQ(alerts, 1);
}

void chooseByTyping(QPushButton* button, const QString& path)
{
    clickAndUse(button, [&path](QDialog& dialog) {
        auto* name = dialog.findChild<QLineEdit*>("fileNameEdit");
        ASSERT_NE(name, nullptr);
        // Without the focus the dialog would use the name selected in the list, not the typed one.
        dialog.activateWindow();
        name->setFocus();
        ASSERT_TRUE(waitFor([name] { return name->hasFocus(); }));
        for (const QChar character : path) {
            QTest::sendKeyEvent(QTest::Click, name, Qt::Key_unknown, QString(character),
                                Qt::NoModifier);
        }
        EXPECT_EQ(name->text(), path);
        QTest::keyClick(name, Qt::Key_Return);
    });
}

int hueOf(const TextView& view) { return view.palette().color(QPalette::Text).hslHue(); }

} // namespace vornadel::test
